#include "PlatformData/PropertyListText.h"
#include "PlatformData/Python.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Platform/Posix/PosixKeyedArchiver.h"
#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"

#include <gtest/gtest.h>

#include <random>

namespace tallyfoot::testing {
namespace {

using namespace std::string_literals;
using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
PropertyList id(std::int64_t number) { return {Dictionary{{"CF$UID", {number}}}}; }

PropertyList classEntry(const std::string& name, const std::string& parent = "NSObject") {
    Array names{text(name)};
    if (parent != "NSObject") names.push_back(text(parent));
    names.push_back(text("NSObject"));
    return {Dictionary{{"$classname", text(name)}, {"$classes", {names}}}};
}

// An archive by hand: the objects after "$null", of which the first is the root.
std::string archive(Array objects, PropertyList root = id(1)) {
    objects.insert(objects.begin(), text("$null"));
    return PosixPropertyLists().data({Dictionary{{"$version", {std::int64_t{100000}}},
                                                 {"$archiver", text("NSKeyedArchiver")},
                                                 {"$top", {Dictionary{{"root", std::move(root)}}}},
                                                 {"$objects", {std::move(objects)}}}});
}

Coder shop(const std::string& name) {
    Coder coder("ApplicationInfo");
    coder.encode(name, "appName");
    coder.encode("shop-1", "appId");
    coder.encode("Retail", "bizArea");
    coder.encode("Retail", "bizAreaId");
    return coder;
}

void expectShop(const Coder& coder, const std::string& name) {
    EXPECT_EQ(coder.className(), "ApplicationInfo");
    EXPECT_EQ(coder.decode("appName"), name);
    EXPECT_EQ(coder.decode("appId"), "shop-1");
    EXPECT_EQ(coder.decode("bizArea"), "Retail");
    EXPECT_EQ(coder.decode("bizAreaId"), "Retail");
    EXPECT_EQ(coder.fields().size(), 4u);
}

class PosixKeyedArchiverTest : public ::testing::Test {
protected:
    PosixKeyedArchiver archiver;
};

TEST_F(PosixKeyedArchiverTest, ReadsBackAnObject) {
    const auto read = archiver.unarchivedObject(archiver.archivedData(shop("Shöp\0 1"s)));
    ASSERT_TRUE(read);
    expectShop(*read, "Shöp\0 1"s);
}

TEST_F(PosixKeyedArchiverTest, ReadsBackAnArray) {
    const auto read =
        archiver.unarchivedArray(archiver.archivedData(std::vector{shop("One"), shop("Two"), shop("One")}));
    ASSERT_TRUE(read);
    ASSERT_EQ(read->size(), 3u);
    expectShop((*read)[0], "One");
    expectShop((*read)[1], "Two");
    expectShop((*read)[2], "One");
}

TEST_F(PosixKeyedArchiverTest, ReadsBackAnEmptyArrayAndAnObjectWithoutFields) {
    const auto none = archiver.unarchivedArray(archiver.archivedData(std::vector<Coder>()));
    ASSERT_TRUE(none);
    EXPECT_TRUE(none->empty());
    const auto bare = archiver.unarchivedObject(archiver.archivedData(Coder("Bare")));
    ASSERT_TRUE(bare);
    EXPECT_EQ(bare->className(), "Bare");
    EXPECT_TRUE(bare->fields().empty());
}

TEST_F(PosixKeyedArchiverTest, ReadsBackOddTextsAndKeys) {
    Coder coder("Odd");
    for (const auto& odd : {""s, "$null"s, "$class"s, "$"s, "$$x"s, "NS.objects"s, "\U0001F600"s, "a\nb"s})
        coder.encode(odd, odd);
    const auto read = archiver.unarchivedObject(archiver.archivedData(coder));
    ASSERT_TRUE(read);
    for (const auto& [key, value] : coder.fields()) EXPECT_EQ(read->decode(key), value) << key;
    EXPECT_EQ(read->fields().size(), coder.fields().size());
}

TEST_F(PosixKeyedArchiverTest, AnObjectIsNoArrayAndAnArrayNoObject) {
    EXPECT_FALSE(archiver.unarchivedArray(archiver.archivedData(shop("One"))));
    EXPECT_FALSE(archiver.unarchivedObject(archiver.archivedData(std::vector{shop("One")})));
}

TEST_F(PosixKeyedArchiverTest, ReadsTextObjectsNilsAndOtherFieldsOfOtherWriters) {
    const auto read = archiver.unarchivedObject(archive({{Dictionary{{"plain", id(2)},
                                                                     {"object", id(3)},
                                                                     {"nil", id(0)},
                                                                     {"number", {std::int64_t{7}}},
                                                                     {"flag", {true}},
                                                                     {"boxed", id(5)},
                                                                     {"other", id(6)},
                                                                     {"missing", id(99)},
                                                                     {"$class", id(4)}}},
                                                         text("a"),
                                                         {Dictionary{{"NS.string", text("b")}, {"$class", id(7)}}},
                                                         classEntry("Thing"),
                                                         {std::int64_t{3}},
                                                         {Dictionary{{"x", id(2)}, {"$class", id(4)}}},
                                                         classEntry("NSMutableString", "NSString")}));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->className(), "Thing");
    EXPECT_EQ(read->decode("plain"), "a");
    EXPECT_EQ(read->decode("object"), "b");
    EXPECT_EQ(read->fields().size(), 2u);
}

TEST_F(PosixKeyedArchiverTest, ReadsAMutableArray) {
    const auto read =
        archiver.unarchivedArray(archive({{Dictionary{{"NS.objects", {Array{id(2), id(2)}}}, {"$class", id(3)}}},
                                          {Dictionary{{"$class", id(4)}}},
                                          classEntry("NSMutableArray", "NSArray"),
                                          classEntry("Thing")}));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->size(), 2u);
}

TEST_F(PosixKeyedArchiverTest, WhatIsNoArchiveIsNothing) {
    const Dictionary thing{{"$class", id(2)}};
    ASSERT_TRUE(archiver.unarchivedObject(archive({{thing}, classEntry("Thing")})));
    const std::vector<std::string> bad{
        "",
        "bplist00",
        "text",
        PosixPropertyLists().data({Array{}}),
        PosixPropertyLists().data({Dictionary{}}),
        PosixPropertyLists().data({Dictionary{{"$archiver", text("NSKeyedArchiver")}, {"$top", {Dictionary{}}}}}),
        archive({}),
        archive({{thing}, classEntry("Thing")}, id(9)),
        archive({{thing}, classEntry("Thing")}, id(0)),
        archive({{thing}, classEntry("Thing")}, text("1")),
        archive({text("root")}),
        archive({{Dictionary{}}}),
        archive({{Dictionary{{"$class", id(1)}}}}),
        archive({{Dictionary{{"$class", id(0)}}}}),
        archive({{Dictionary{{"$class", text("Thing")}}}}),
        archive({{thing}, {Dictionary{{"$classname", {std::int64_t{1}}}}}}),
    };
    for (std::size_t index = 0; index < bad.size(); ++index) {
        EXPECT_FALSE(archiver.unarchivedObject(bad[index])) << index;
        EXPECT_FALSE(archiver.unarchivedArray(bad[index])) << index;
    }
}

TEST_F(PosixKeyedArchiverTest, AnArrayOfAnythingButObjectsIsNothing) {
    const auto arrayOf = [](PropertyList element) {
        return archive({{Dictionary{{"NS.objects", {Array{std::move(element)}}}, {"$class", id(2)}}},
                        classEntry("NSArray"),
                        text("text")});
    };
    for (const auto& element : {id(0), id(3), id(1), id(2), id(77), text("x"), PropertyList{true}})
        EXPECT_FALSE(archiver.unarchivedArray(arrayOf(element)));
    EXPECT_FALSE(archiver.unarchivedArray(
        archive({{Dictionary{{"NS.objects", id(1)}, {"$class", id(2)}}}, classEntry("NSArray")})));
    EXPECT_FALSE(archiver.unarchivedArray(
        archive({{Dictionary{{"NS.objects", {Array{}}}, {"$class", id(2)}}}, classEntry("NSSet")})));
}

TEST_F(PosixKeyedArchiverTest, SurvivesDamage) {
    const auto bytes = archiver.archivedData(std::vector{shop("One"), shop("Two")});
    std::mt19937 random(7);
    std::size_t readable = 0;
    for (int round = 0; round < 3000; ++round) {
        auto damaged = bytes;
        for (auto hits = random() % 4 + 1; hits > 0; --hits)
            damaged[random() % damaged.size()] = static_cast<char>(random());
        readable += archiver.unarchivedArray(damaged).has_value();
        readable += archiver.unarchivedObject(damaged).has_value();
    }
    EXPECT_GT(readable, 0u);
}

TEST_F(PosixKeyedArchiverTest, AnotherReaderFindsTheLayoutOfTheKeyedArchiver) {
    if (!isPythonAvailable()) GTEST_SKIP() << "python3 is missing";
    const TemporaryFolder folder;
    writeFile(folder / "archive", archiver.archivedData(std::vector{shop("One"), shop("Two")}));
    EXPECT_EQ(python("archive = plistlib.load(open(sys.argv[1], 'rb'))\n"
                     "objects = archive['$objects']\n"
                     "at = lambda uid: objects[uid.data]\n"
                     "print(archive['$version'], archive['$archiver'], archive['$top'], objects[0])\n"
                     "root = at(archive['$top']['root'])\n"
                     "print(at(root['$class']), len(root['NS.objects']))\n"
                     "for element in root['NS.objects']:\n"
                     "    fields = at(element)\n"
                     "    print(at(fields.pop('$class')), sorted((key, at(value)) for key, value in fields.items()))\n"
                     "texts = [one for one in objects if isinstance(one, str)]\n"
                     "print(len(texts) == len(set(texts)))",
                     folder / "archive"),
              "100000 NSKeyedArchiver {'root': UID(1)} $null\n"
              "{'$classes': ['NSArray', 'NSObject'], '$classname': 'NSArray'} 2\n"
              "{'$classes': ['ApplicationInfo', 'NSObject'], '$classname': 'ApplicationInfo'} "
              "[('appId', 'shop-1'), ('appName', 'One'), ('bizArea', 'Retail'), ('bizAreaId', 'Retail')]\n"
              "{'$classes': ['ApplicationInfo', 'NSObject'], '$classname': 'ApplicationInfo'} "
              "[('appId', 'shop-1'), ('appName', 'Two'), ('bizArea', 'Retail'), ('bizAreaId', 'Retail')]\n"
              "True\n");
}

TEST_F(PosixKeyedArchiverTest, ReadsWhatAnotherWriterWroteInBothForms) {
    if (!isPythonAvailable()) GTEST_SKIP() << "python3 is missing";
    const TemporaryFolder folder;
    const std::string program =
        "binary = sys.argv[1].endswith('BINARY')\n"
        "uid = plistlib.UID if binary else lambda number: {'CF$UID': number}\n"
        "objects = ['$null', {'NS.objects': [uid(2)], '$class': uid(6)},\n"
        "           {'appName': uid(0), 'appId': uid(3), 'bizArea': uid(4), '$class': uid(5)}, 'shop-1', 'Détail',\n"
        "           {'$classname': 'ApplicationInfo', '$classes': ['ApplicationInfo', 'NSObject']},\n"
        "           {'$classname': 'NSMutableArray', '$classes': ['NSMutableArray', 'NSArray', 'NSObject']}]\n"
        "archive = {'$version': 100000, '$archiver': 'NSKeyedArchiver', '$top': {'root': uid(1)}, '$objects': "
        "objects}\n"
        "plistlib.dump(archive, open(sys.argv[1], 'wb'), fmt=plistlib.";
    for (const std::string form : {"FMT_BINARY", "FMT_XML"}) {
        python(program + form + ")", folder / form);
        const auto read = archiver.unarchivedArray(readFile(folder / form));
        ASSERT_TRUE(read) << form;
        ASSERT_EQ(read->size(), 1u);
        EXPECT_EQ(read->front().className(), "ApplicationInfo");
        EXPECT_EQ(read->front().decode("appName"), std::nullopt);
        EXPECT_EQ(read->front().decode("appId"), "shop-1");
        EXPECT_EQ(read->front().decode("bizArea"), "Détail");
    }
}

} // namespace
} // namespace tallyfoot::testing
