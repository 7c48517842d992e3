#include "Tallyfoot/Storage/PathNames.h"

#include <gmock/gmock.h>

#include <set>
#include <vector>

namespace tallyfoot {
namespace {

using namespace std::string_literals;

TEST(PathComponent, AnOrdinaryTextIsItsOwnName) {
    for (const auto& text : {"Shop"s, "My Shop 2"s, "Läden"s, ".shop"s, "..."s, "100%"s, "50%-off"s, "a\\b"s, " "s,
                             "a\nb"s, std::string(255, 'x')}) {
        EXPECT_EQ(pathComponent(text), text);
    }
}

TEST(PathComponent, ATextThatIsNoNameIsEncoded) {
    EXPECT_EQ(pathComponent(""), "%-");
    EXPECT_EQ(pathComponent("a/b"), "%-a%2Fb");
    EXPECT_EQ(pathComponent("a\0b"s), "%-a%00b");
    EXPECT_EQ(pathComponent("../../x"), "%-..%2F..%2Fx");
}

TEST(PathComponent, NoTextLeadsOutOfItsFolder) {
    for (const auto& text :
         {""s, "."s, ".."s, "/"s, "/etc"s, "../x"s, "\0"s, "%-"s, std::string(256, 'x'), std::string(5000, '/')}) {
        const auto name = pathComponent(text);
        EXPECT_FALSE(name.empty());
        EXPECT_NE(name, ".");
        EXPECT_NE(name, "..");
        EXPECT_EQ(name.find('/'), name.npos);
        EXPECT_EQ(name.find('\0'), name.npos);
        EXPECT_LE(name.size(), 255U);
    }
}

TEST(PathComponent, TwoTextsNeverShareAName) {
    const std::vector texts{""s,
                            "%-"s,
                            "%-%25-"s,
                            "."s,
                            "%-."s,
                            ".."s,
                            "a/b"s,
                            "%-a%2Fb"s,
                            "a%2Fb"s,
                            "a\0b"s,
                            "%-a%00b"s,
                            std::string(256, 'x'),
                            std::string(257, 'x'),
                            std::string(256, 'x') + "y",
                            std::string(256, 'x') + "z",
                            pathComponent(std::string(256, 'x'))};
    std::set<std::string> names;
    for (const auto& text : texts) names.insert(pathComponent(text));
    EXPECT_EQ(names.size(), texts.size());
}

TEST(PathComponent, ALongTextIsNotCutWithinACharacter) {
    std::string text;
    while (text.size() < 300) text += "ä";
    for (const auto* start : {"", "x"}) {
        const auto name = pathComponent(start + text);
        const auto cut = name.find("%#");
        ASSERT_NE(cut, name.npos);
        EXPECT_EQ(static_cast<unsigned char>(name[cut - 1]), 0xA4);
    }
}

TEST(PlainFileName, IsAVisibleNameInItsFolder) {
    for (const auto& name : {"a.log"s, "07-03-2024T14-05-09-123.log"s, "a b"s, "ä"s})
        EXPECT_TRUE(isPlainFileName(name));
    for (const auto& name : {""s, "."s, ".."s, ".hidden"s, "a/b"s, "/a"s, "a/"s, "a\\b"s, "a\0b"s, "../../x"s}) {
        EXPECT_FALSE(isPlainFileName(name)) << name;
    }
}

TEST(LastPathComponent, IsWhatFollowsTheLastSlash) {
    EXPECT_EQ(lastPathComponent("/a/b.log"), "b.log");
    EXPECT_EQ(lastPathComponent("b.log"), "b.log");
    EXPECT_EQ(lastPathComponent("/a/"), "");
}

TEST(FileURL, IsPercentEncoded) {
    EXPECT_EQ(fileURL("/var/My Shop/a.log"), "file:///var/My%20Shop/a.log");
    EXPECT_EQ(fileURL("/ä/100%/a?b#c"), "file:///%C3%A4/100%25/a%3Fb%23c");
    EXPECT_EQ(fileURL("/07-03-2024T14-05-09-123.log"), "file:///07-03-2024T14-05-09-123.log");
}

} // namespace
} // namespace tallyfoot
