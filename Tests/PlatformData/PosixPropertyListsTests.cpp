#include "PlatformData/Python.h"
#include "Support/HostBundle.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <limits>

namespace tallyfoot::testing {
namespace {

using namespace std::string_literals;
using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;

PropertyList text(std::string characters) { return {std::move(characters)}; }
PropertyList whole(std::int64_t number) { return {number}; }

class PosixPropertyListsTest : public ::testing::Test {
protected:
    std::optional<PropertyList> read(const std::string& bytes) const { return lists.propertyList(bytes); }

    // One value as the XML form has it.
    std::optional<PropertyList> readValue(const std::string& xml) const {
        return read("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + xml + "</plist>");
    }

    PosixPropertyLists lists;
};

TEST_F(PosixPropertyListsTest, ReadsXML) {
    EXPECT_EQ(read(xmlDictionary("<key>text</key><string>a &amp; é &#x20AC;</string><key>flag</key><true/>"
                                 "<key>number</key><integer>-5</integer><key>half</key><real>0.5</real>"
                                 "<key>data</key><data>AAEC</data><key>list</key>"
                                 "<array><string>x</string><dict/><false/></array>")),
              (PropertyList{Dictionary{{"text", text("a & é €")},
                                       {"flag", {true}},
                                       {"number", whole(-5)},
                                       {"half", {0.5}},
                                       {"data", {PropertyList::Data{"\0\1\2"s}}},
                                       {"list", {Array{text("x"), {Dictionary{}}, {false}}}}}}));
}

TEST_F(PosixPropertyListsTest, ReadsTheIntegersOfXMLToTheirLimits) {
    EXPECT_EQ(readValue("<integer>9223372036854775807</integer>"), whole(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(readValue("<integer>-9223372036854775808</integer>"), whole(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(readValue("<integer>18446744073709551615</integer>"), PropertyList{0x1p64});
}

TEST_F(PosixPropertyListsTest, ReadsADateAsSecondsSince2001) {
    EXPECT_EQ(readValue("<date>2001-01-02T00:00:00Z</date>"), PropertyList{86400.0});
}

TEST_F(PosixPropertyListsTest, ReadsAUniqueIdOfXML) {
    EXPECT_EQ(readValue("<dict><key>CF$UID</key><integer>7</integer></dict>"),
              (PropertyList{Dictionary{{"CF$UID", whole(7)}}}));
}

TEST_F(PosixPropertyListsTest, ReadsXMLWithCommentsSectionsAndSpace) {
    EXPECT_EQ(
        readValue("<!-- <dict> -->\n <dict >\n<key>a</key> <!-- - --> <string><![CDATA[</dict>&]]></string>\n</dict >"),
        (PropertyList{Dictionary{{"a", text("</dict>&")}}}));
}

TEST_F(PosixPropertyListsTest, ReadsWhatItWrote) {
    const PropertyList list{Dictionary{{"a", {Array{whole(1), text("é"), {2.5}}}}, {"b", {PropertyList::Data{"x"}}}}};
    EXPECT_EQ(read(lists.data(list)), list);
}

TEST_F(PosixPropertyListsTest, WhatIsMalformedIsNone) {
    for (const auto& bytes : {""s,
                              " "s,
                              "text"s,
                              "{}"s,
                              "<plist>"s,
                              "<plist></plist>"s,
                              "<plist version=\"1.0\"><dict><key>a</key></dict>"s,
                              "<plist><dict><string>a</string></dict></plist>"s,
                              "<plist><array></dict></plist>"s,
                              "<plist><integer>x"s,
                              "<plist><other/></plist>"s,
                              "<!-- "s,
                              "<plist><string><![CDATA[</string></plist>"s,
                              "<?xml"s,
                              "<"s,
                              ">"s,
                              "<>"s,
                              "</>"s,
                              "<!>"s,
                              "<!--->"s,
                              "<plist><dict a=\"/\">"s,
                              "bplist00"s,
                              "bplist"s,
                              "\0\0\0"s,
                              "\xFF\xFE<\0"s,
                              "<plist><array>"s,
                              "</plist>"s,
                              "<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><true/></plist>"s})
        EXPECT_FALSE(read(bytes)) << bytes;
}

TEST_F(PosixPropertyListsTest, ReadsXMLToADepthOf512) {
    const auto nested = [this](int depth) {
        std::string opening;
        std::string closing;
        for (int level = 0; level < depth; ++level) {
            opening += "<array>";
            closing += "</array>";
        }
        return readValue(opening + closing).has_value();
    };
    EXPECT_TRUE(nested(500));
    EXPECT_FALSE(nested(513));
    EXPECT_FALSE(nested(1000000));
}

TEST_F(PosixPropertyListsTest, DepthCannotHide) {
    std::string opening;
    for (int level = 0; level < 200000; ++level) opening += "<array><!-- </array> -->";
    EXPECT_FALSE(readValue(opening));
    opening.clear();
    for (int level = 0; level < 200000; ++level) opening += "<array a='/>'>";
    EXPECT_FALSE(readValue(opening));
    opening.clear();
    for (int level = 0; level < 200000; ++level) opening += "<array\n>";
    EXPECT_FALSE(readValue(opening));
    opening.clear();
    for (int level = 0; level < 200000; ++level) opening += "<dict><key>a</key>";
    EXPECT_FALSE(readValue(opening));
}

TEST_F(PosixPropertyListsTest, WhatIsTooLargeIsNone) {
    EXPECT_FALSE(readValue("<string>" + std::string(PosixPropertyLists::maximumSize, 'a') + "</string>"));
    EXPECT_FALSE(read(lists.data(text(std::string(PosixPropertyLists::maximumSize, 'a')))));
    EXPECT_TRUE(readValue("<string>" + std::string(1u << 20, 'a') + "</string>"));
}

TEST_F(PosixPropertyListsTest, ReadsADictionaryFromAFile) {
    const TemporaryFolder folder;
    writeFile(folder / "a.plist", xmlDictionary("<key>a</key><string>b</string>"));
    EXPECT_EQ(lists.dictionary(folder / "a.plist"), (Dictionary{{"a", text("b")}}));
    writeFile(folder / "b.plist", lists.data({Dictionary{{"a", text("b")}}}));
    EXPECT_EQ(lists.dictionary(folder / "b.plist"), (Dictionary{{"a", text("b")}}));
}

TEST_F(PosixPropertyListsTest, AFileThatHoldsNoDictionaryGivesNone) {
    const TemporaryFolder folder;
    EXPECT_FALSE(lists.dictionary(folder / "absent.plist"));
    EXPECT_FALSE(lists.dictionary(folder.path().string()));
    EXPECT_FALSE(lists.dictionary(""));
    writeFile(folder / "empty.plist", "");
    EXPECT_FALSE(lists.dictionary(folder / "empty.plist"));
    writeFile(folder / "array.plist", "<plist version=\"1.0\"><array/></plist>");
    EXPECT_FALSE(lists.dictionary(folder / "array.plist"));
    std::filesystem::create_symlink("nowhere", folder / "link.plist");
    EXPECT_FALSE(lists.dictionary(folder / "link.plist"));
}

TEST_F(PosixPropertyListsTest, APipeInAFilesPlaceIsNotWaitedFor) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe.plist").c_str(), 0600), 0);
    EXPECT_FALSE(lists.dictionary(folder / "pipe.plist"));
}

TEST_F(PosixPropertyListsTest, AHugeFileIsNotRead) {
    const TemporaryFolder folder;
    writeFile(folder / "huge.plist", "bplist00");
    std::filesystem::resize_file(folder / "huge.plist", std::uintmax_t{1} << 40U);
    EXPECT_FALSE(lists.dictionary(folder / "huge.plist"));
}

TEST_F(PosixPropertyListsTest, AnotherReaderUnderstandsWhatItWrites) {
    if (!isPythonAvailable()) GTEST_SKIP() << "python3 is missing";
    const TemporaryFolder folder;
    writeFile(folder / "list",
              lists.data({Dictionary{{"text", text("é\0\U0001F600"s)},
                                     {"list", {Array{{true}, whole(-7), whole(300), {0.25}, {Array{}}}}},
                                     {"data", {PropertyList::Data{"\0x"s}}},
                                     {"id", {Dictionary{{"CF$UID", whole(9)}}}}}}));
    EXPECT_EQ(python("value = plistlib.load(open(sys.argv[1], 'rb'))\n"
                     "print(sorted((key, ascii(item)) for key, item in value.items()))",
                     folder / "list"),
              "[('data', \"b'\\\\x00x'\"), ('id', 'UID(9)'), ('list', '[True, -7, 300, 0.25, []]'), "
              "('text', \"'\\\\xe9\\\\x00\\\\U0001f600'\")]\n");
}

TEST_F(PosixPropertyListsTest, UnderstandsWhatAnotherWriterWrote) {
    if (!isPythonAvailable()) GTEST_SKIP() << "python3 is missing";
    const TemporaryFolder folder;
    const std::string program = "import datetime\n"
                                "value = {'text': 'é\\U0001F600', 'list': [True, -7, 2**40, 0.25, b'x'],\n"
                                "         'when': datetime.datetime(2001, 1, 2), 'many': list(range(300))}\n"
                                "plistlib.dump(value, open(sys.argv[1], 'wb'), fmt=plistlib.";
    Array many;
    for (int number = 0; number < 300; ++number) many.push_back(whole(number));
    const Dictionary expected{
        {"text", text("é\U0001F600")},
        {"list", {Array{{true}, whole(-7), whole(std::int64_t{1} << 40U), {0.25}, {PropertyList::Data{"x"}}}}},
        {"when", {86400.0}},
        {"many", {many}}};
    python(program + "FMT_BINARY)", folder / "binary");
    EXPECT_EQ(lists.dictionary(folder / "binary"), expected);
    python(program + "FMT_XML)", folder / "xml");
    EXPECT_EQ(lists.dictionary(folder / "xml"), expected);
}

} // namespace
} // namespace tallyfoot::testing
