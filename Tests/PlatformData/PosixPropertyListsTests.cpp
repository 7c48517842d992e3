#include "PlatformData/PropertyListText.h"
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

PropertyList integer(std::int64_t number) { return {number}; }

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
                                       {"number", integer(-5)},
                                       {"half", {0.5}},
                                       {"data", {PropertyList::Data{"\0\1\2"s}}},
                                       {"list", {Array{text("x"), {Dictionary{}}, {false}}}}}}));
}

TEST_F(PosixPropertyListsTest, ReadsTheIntegersOfXMLToTheirLimits) {
    EXPECT_EQ(readValue("<integer>9223372036854775807</integer>"), integer(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(readValue("<integer>-9223372036854775808</integer>"), integer(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(readValue("<integer>18446744073709551615</integer>"), PropertyList{0x1p64});
}

TEST_F(PosixPropertyListsTest, ReadsIntegersOfXMLWithSignsAndInHexadecimal) {
    EXPECT_EQ(readValue("<integer> +7\n</integer>"), integer(7));
    EXPECT_EQ(readValue("<integer>0x1F</integer>"), integer(31));
    EXPECT_EQ(readValue("<integer>-0X1f</integer>"), integer(-31));
    EXPECT_EQ(readValue("<integer>007</integer>"), integer(7));
}

TEST_F(PosixPropertyListsTest, AnIntegerOfXMLThatIsNoneOrBeyond64BitsIsMalformed) {
    for (const char* odd :
         {"", "5x", "x", "-", "+-5", "--5", "0x", "1.5", "18446744073709551616", "-9223372036854775809"})
        EXPECT_FALSE(readValue("<integer>"s + odd + "</integer>")) << odd;
}

TEST_F(PosixPropertyListsTest, ReadsRealsOfXML) {
    EXPECT_EQ(readValue("<real>3.141592653589793</real>"), PropertyList{3.141592653589793});
    EXPECT_EQ(readValue("<real> +1e-300 </real>"), PropertyList{1e-300});
    EXPECT_EQ(readValue("<real>-0</real>"), PropertyList{-0.0});
    EXPECT_EQ(readValue("<real>+infinity</real>"), PropertyList{std::numeric_limits<double>::infinity()});
    for (const char* odd : {"", "1.5x", "1,5", "+-1", "1e400"})
        EXPECT_FALSE(readValue("<real>"s + odd + "</real>")) << odd;
}

TEST_F(PosixPropertyListsTest, ReadsADateAsSecondsSince2001) {
    EXPECT_EQ(readValue("<date>2001-01-02T00:00:00Z</date>"), PropertyList{86400.0});
    EXPECT_EQ(readValue("<date>2024-02-29T23:59:58Z</date>"), PropertyList{730943998.0});
    EXPECT_EQ(readValue("<date>1999-12-31T00:00:00Z</date>"), PropertyList{-31708800.0});
    for (const char* odd :
         {"", "yesterday", "2001-01-02", "2001-02-29T00:00:00Z", "2001-01-02T24:00:00Z", "2001-01-02T00:60:00Z",
          "2001-01-02T00:00:60Z", "2001-01-02T00:00:00", "20o1-01-02T00:00:00Z"})
        EXPECT_FALSE(readValue("<date>"s + odd + "</date>")) << odd;
}

TEST_F(PosixPropertyListsTest, ReadsTheDataOfXMLHoweverItIsBroken) {
    const auto bytes = [this](const std::string& digits) { return readValue("<data>" + digits + "</data>"); };
    EXPECT_EQ(bytes(""), PropertyList{PropertyList::Data{""}});
    EXPECT_EQ(bytes("\n\tAP/+\r\n A A = = \n"), PropertyList{PropertyList::Data{"\0\xFF\xFE\0"s}});
    EXPECT_EQ(bytes("YWI="), PropertyList{PropertyList::Data{"ab"}});
    for (const char* odd : {"Y", "YW", "YWI", "YWI=YWI=", "Y===", "====", "!!!!"}) EXPECT_FALSE(bytes(odd)) << odd;
}

TEST_F(PosixPropertyListsTest, ReadsReferencesToCharacters) {
    EXPECT_EQ(readValue("<string>&lt;&gt;&amp;&quot;&apos;&#65;&#x1F600;&#x10ffff;</string>"),
              text("<>&\"'A\U0001F600\U0010FFFF"));
    for (const char* odd : {"&", "&;", "&amp", "&amp lt;", "&nbsp;", "&#0;", "&#xD800;", "&#x110000;", "&#x;", "&#-1;",
                            "&#x100000041;", "&#X41;"})
        EXPECT_FALSE(readValue("<string>a"s + odd + "b</string>")) << odd;
}

TEST_F(PosixPropertyListsTest, ReadsXMLBehindAByteOrderMarkAndWithoutItsOutermostElement) {
    const Dictionary expected{{"a", text("b")}};
    const auto xml = xmlDictionary("<key>a</key><string>b</string>");
    EXPECT_EQ(read("\xEF\xBB\xBF" + xml), PropertyList{expected});
    EXPECT_EQ(read("\n<dict><key>a</key><string>b</string></dict>\n"), PropertyList{expected});
}

TEST_F(PosixPropertyListsTest, TheAttributesOfTheOutermostElementMayStandOnLinesOfTheirOwn) {
    EXPECT_EQ(read("<plist\n\tversion='1.0'\n><true/></plist>"), PropertyList{true});
}

TEST_F(PosixPropertyListsTest, ATextIsNeverCutShort) {
    for (const auto& odd : {"\xFF"s, "\xC3"s, "\xED\xA0\x80"s, "\0"s}) {
        EXPECT_FALSE(readValue("<dict><key>dev</key><string>dev" + odd + ".example</string></dict>"));
        EXPECT_FALSE(readValue("<dict><key>d" + odd + "ev</key><string>dev.example</string></dict>"));
    }
}

TEST_F(PosixPropertyListsTest, OfEqualKeysOfXMLTheLastWins) {
    EXPECT_EQ(readValue("<dict><key>a</key><string>b</string><key>a</key><string>c</string></dict>"),
              (PropertyList{Dictionary{{"a", text("c")}}}));
}

TEST_F(PosixPropertyListsTest, ReadsAUniqueIdOfXML) {
    EXPECT_EQ(readValue("<dict><key>CF$UID</key><integer>7</integer></dict>"),
              (PropertyList{Dictionary{{"CF$UID", integer(7)}}}));
}

TEST_F(PosixPropertyListsTest, ReadsXMLWithCommentsSectionsAndSpace) {
    EXPECT_EQ(
        readValue("<!-- <dict> -->\n <dict >\n<key>a</key> <!-- - --> <string><![CDATA[</dict>&]]></string>\n</dict >"),
        (PropertyList{Dictionary{{"a", text("</dict>&")}}}));
}

TEST_F(PosixPropertyListsTest, ReadsWhatItWrote) {
    const PropertyList list{Dictionary{{"a", {Array{integer(1), text("é"), {2.5}}}}, {"b", {PropertyList::Data{"x"}}}}};
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
                              "<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><true/></plist>"s,
                              "<plist><dict><key>a</key></dict></plist>"s,
                              "<plist><dict><key>a</key><key>b</key><true/></dict></plist>"s,
                              "<plist><dict>text</dict></plist>"s,
                              "<plist><dict lang=\"en\"/></plist>"s,
                              "<plist><key>a</key></plist>"s,
                              "<plist><array><key>a</key></array></plist>"s,
                              "<plist><true>x</true></plist>"s,
                              "<plist><string>a<b/></string></plist>"s,
                              "<plist><string>a</key></plist>"s,
                              "<plist><true/><true/></plist>"s,
                              "<plist><true/></plist><plist><true/></plist>"s,
                              "<plist><true/></plist>text"s,
                              "<plist/><true/>"s,
                              "</true>"s,
                              "</string>"s})
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
    EXPECT_TRUE(nested(512));
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

TEST_F(PosixPropertyListsTest, XMLOfTooManyValuesIsNone) {
    std::string many;
    for (int value = 0; value < 600000; ++value) many += "<true/>";
    EXPECT_FALSE(readValue("<array>" + many + "</array>"));
    EXPECT_TRUE(readValue("<array>" + many.substr(0, many.size() / 2) + "</array>"));
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
                                     {"list", {Array{{true}, integer(-7), integer(300), {0.25}, {Array{}}}}},
                                     {"data", {PropertyList::Data{"\0x"s}}},
                                     {"id", {Dictionary{{"CF$UID", integer(9)}}}}}}));
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
    for (int number = 0; number < 300; ++number) many.push_back(integer(number));
    const Dictionary expected{
        {"text", text("é\U0001F600")},
        {"list", {Array{{true}, integer(-7), integer(std::int64_t{1} << 40U), {0.25}, {PropertyList::Data{"x"}}}}},
        {"when", {86400.0}},
        {"many", {many}}};
    python(program + "FMT_BINARY)", folder / "binary");
    EXPECT_EQ(lists.dictionary(folder / "binary"), expected);
    python(program + "FMT_XML)", folder / "xml");
    EXPECT_EQ(lists.dictionary(folder / "xml"), expected);
}

} // namespace
} // namespace tallyfoot::testing
