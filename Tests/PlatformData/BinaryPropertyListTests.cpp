#include "PlatformData/PropertyListText.h"

#include "Tallyfoot/Platform/Posix/BinaryPropertyList.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace tallyfoot {

// In the name of a parameterised test.
void PrintTo(const PropertyList& list, std::ostream* stream) { *stream << "kind " << list.value.index(); }

namespace testing {
namespace {

using namespace std::string_literals;
using binarypropertylist::decoded;
using binarypropertylist::encoded;
using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
PropertyList whole(std::int64_t number) { return {number}; }

std::string bigEndian(std::uint64_t number, int width) {
    std::string bytes;
    while (width-- > 0) bytes += static_cast<char>(number >> (8 * width));
    return bytes;
}

// A list of hand-made objects, with references and offsets of the widths given.
std::string listOf(const std::vector<std::string>& objects, int referenceWidth = 1, std::uint64_t top = 0) {
    std::string bytes = "bplist00";
    std::string table;
    for (const auto& object : objects) {
        table += bigEndian(bytes.size(), 4);
        bytes += object;
    }
    const auto tableAt = bytes.size();
    return bytes + table + std::string(6, '\0') + bigEndian(4, 1)
           + bigEndian(static_cast<std::uint64_t>(referenceWidth), 1) + bigEndian(objects.size(), 8) + bigEndian(top, 8)
           + bigEndian(tableAt, 8);
}

class BinaryPropertyListRoundTrip : public ::testing::TestWithParam<PropertyList> {};

TEST_P(BinaryPropertyListRoundTrip, ReadsBackWhatItWrote) {
    EXPECT_EQ(decoded(encoded(GetParam())), GetParam());
    const PropertyList inside{Dictionary{{"key", {Array{GetParam(), GetParam()}}}}};
    EXPECT_EQ(decoded(encoded(inside)), inside);
}

INSTANTIATE_TEST_SUITE_P(
    Values, BinaryPropertyListRoundTrip,
    ::testing::Values(PropertyList{true}, PropertyList{false}, whole(0), whole(-1), whole(255), whole(256),
                      whole(65536), whole(std::numeric_limits<std::int64_t>::max()),
                      whole(std::numeric_limits<std::int64_t>::min()), PropertyList{1.5}, PropertyList{-0.0},
                      PropertyList{std::numeric_limits<double>::infinity()}, text(""), text("plain"),
                      text(std::string(14, 'a')), text(std::string(15, 'a')), text(std::string(70000, 'a')),
                      text("a\0b"s), text("Größe €"), text("\U0001F600 face"), text(std::string(300, 'a') + "é"),
                      PropertyList{PropertyList::Data{""}}, PropertyList{PropertyList::Data{"\0\xFF"s}},
                      PropertyList{PropertyList::Data{std::string(300, '\1')}}, PropertyList{Array{}},
                      PropertyList{Dictionary{}}, PropertyList{Array(300, text("x"))},
                      PropertyList{Dictionary{{"", whole(1)}, {"a\0b"s, whole(2)}, {"é", {Array{}}}}}));

TEST(BinaryPropertyList, HasRoomForManyObjects) {
    Array numbers;
    for (int number = 0; number < 70000; ++number) numbers.push_back(whole(number));
    const PropertyList list{std::move(numbers)};
    EXPECT_EQ(decoded(encoded(list)), list);
}

TEST(BinaryPropertyList, WritesEqualTextsOnce) {
    const auto once = encoded({Array{text(std::string(1000, 'a'))}});
    const auto often = encoded({Array(50, text(std::string(1000, 'a')))});
    EXPECT_LT(often.size(), once.size() + 100);
}

TEST(BinaryPropertyList, WritesIllFormedTextWithReplacementCharacters) {
    EXPECT_EQ(decoded(encoded(text("a\xFFz"))), text("a\uFFFDz"));
    EXPECT_EQ(decoded(encoded(text("\xC3"))), text("\uFFFD"));
}

TEST(BinaryPropertyList, WritesTheDictionaryOfAUniqueIdAsOne) {
    const PropertyList id{Dictionary{{"CF$UID", whole(300)}}};
    EXPECT_EQ(encoded(id).substr(8, 3), "\x81\x01\x2C"s);
    EXPECT_EQ(decoded(encoded(id)), id);
}

TEST(BinaryPropertyList, WhatOnlyLooksLikeAUniqueIdStaysADictionary) {
    for (const auto& number : {whole(-1), whole(std::int64_t{1} << 32U), text("1"), PropertyList{1.0}}) {
        const PropertyList list{Dictionary{{"CF$UID", number}}};
        EXPECT_EQ(decoded(encoded(list)), list);
    }
    const PropertyList two{Dictionary{{"CF$UID", whole(1)}, {"other", whole(1)}}};
    EXPECT_EQ(decoded(encoded(two)), two);
}

TEST(BinaryPropertyList, ReadsEveryWidthOfAnInteger) {
    EXPECT_EQ(decoded(listOf({"\x10\xFF"s})), whole(255));
    EXPECT_EQ(decoded(listOf({"\x11\xFF\xFF"s})), whole(65535));
    EXPECT_EQ(decoded(listOf({"\x12\xFF\xFF\xFF\xFF"s})), whole(4294967295));
    EXPECT_EQ(decoded(listOf({"\x13"s + std::string(8, '\xFF')})), whole(-1));
    EXPECT_EQ(decoded(listOf({"\x14"s + std::string(16, '\xFF')})), whole(-1));
    EXPECT_EQ(decoded(listOf({"\x14"s + std::string(15, '\0') + "\x07"})), whole(7));
}

TEST(BinaryPropertyList, AnIntegerBeyond64BitsReadsAsADouble) {
    EXPECT_EQ(decoded(listOf({"\x14"s + std::string(8, '\0') + std::string(8, '\xFF')})), PropertyList{0x1p64});
}

TEST(BinaryPropertyList, ReadsFloatsAndDates) {
    EXPECT_EQ(decoded(listOf({"\x22\x3F\xC0\x00\x00"s})), PropertyList{1.5});
    EXPECT_EQ(decoded(listOf({"\x33\x3F\xF8\x00\x00\x00\x00\x00\x00"s})), PropertyList{1.5});
}

TEST(BinaryPropertyList, ReadsALoneSurrogateAsAReplacementCharacter) {
    EXPECT_EQ(decoded(listOf({"\x62\xD8\x00\x00\x61"s})), text("\uFFFD"s + "a"));
}

TEST(BinaryPropertyList, OfEqualKeysTheFirstWins) {
    EXPECT_EQ(decoded(listOf({"\xD2\x01\x01\x02\x03"s, "\x51k"s, "\x10\x01"s, "\x10\x02"s})),
              (PropertyList{Dictionary{{"k", whole(1)}}}));
}

TEST(BinaryPropertyList, TheTopNeedNotComeFirst) {
    EXPECT_EQ(decoded(listOf({"\x51"s + "a", "\x51"s + "b"}, 1, 1)), text("b"));
}

TEST(BinaryPropertyList, WhatIsMalformedIsNone) {
    const auto whole = listOf({"\x51"s + "a"});
    ASSERT_TRUE(decoded(whole));
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(decoded(whole.substr(0, length))) << length;

    const std::vector<std::string> bad{
        listOf({}),                                            // no object at all
        listOf({"\x51"s + "a"}, 1, 1),                         // a top that is not there
        listOf({"\xA1\x05"s}),                                 // an element that is not there
        listOf({"\x59"s + "a"}),                               // a text longer than the list
        listOf({"\x5F\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s}), // a text longer than anything
        listOf({"\x6F\x13\x80\x00\x00\x00\x00\x00\x00\x00"s}),
        listOf({"\xAF\x13\x40\x00\x00\x00\x00\x00\x00\x00"s}),
        listOf({"\x5F\x51"s}), // a count that is none
        listOf({"\x00"s}),     // null
        listOf({"\x0F"s}),
        listOf({"\x15"s + std::string(32, 'a')}),
        listOf({"\x21\x00\x00"s}),
        listOf({"\x32\x00\x00\x00\x00"s}),      // a date of four bytes
        listOf({"\x51\xFF"s}),                  // neither ASCII nor UTF-8
        listOf({"\xD1\x01\x01"s, "\x10\x01"s}), // a key that is no text
        listOf({"\xC1\x01"s, "\x10\x01"s}),     // a set
        listOf({"\x84\x01\x00\x00\x00\x00"s}),  // an id of more than 32 bits
        listOf({"\x51"s + "a"}, 0),
        listOf({"\x51"s + "a"}, 9),
    };
    for (std::size_t index = 0; index < bad.size(); ++index) EXPECT_FALSE(decoded(bad[index])) << index;
}

TEST(BinaryPropertyList, ACircleIsNone) {
    EXPECT_FALSE(decoded(listOf({"\xA1\x00"s})));
    EXPECT_FALSE(decoded(listOf({"\xA1\x01"s, "\xA1\x00"s})));
    EXPECT_FALSE(decoded(listOf({"\xA2\x00\x00"s})));
    EXPECT_FALSE(decoded(listOf({"\xD1\x01\x00"s, "\x51k"s})));
}

TEST(BinaryPropertyList, IsReadToADepthOf512) {
    const auto nested = [](int depth) {
        std::vector<std::string> objects;
        for (int level = 0; level < depth; ++level)
            objects.push_back("\xA1"s + bigEndian(static_cast<std::uint64_t>(level) + 1, 4));
        objects.push_back("\x51"s + "a");
        return listOf(objects, 4);
    };
    EXPECT_TRUE(decoded(nested(512)));
    EXPECT_FALSE(decoded(nested(513)));
    EXPECT_FALSE(decoded(nested(1000000)));
}

TEST(BinaryPropertyList, AListThatGrowsWithoutMeasureIsNone) {
    std::vector<std::string> doubling;
    for (int level = 0; level < 60; ++level)
        doubling.push_back("\xA2"s + bigEndian(static_cast<std::uint64_t>(level) + 1, 1)
                           + bigEndian(static_cast<std::uint64_t>(level) + 1, 1));
    doubling.push_back("\x51"s + "a");
    EXPECT_FALSE(decoded(listOf(doubling)));

    // One long text, named again and again.
    const std::string references(1000, '\1');
    EXPECT_FALSE(
        decoded(listOf({"\xAF\x11\x03\xE8"s + references, "\x5F\x12\x00\x01\x00\x00"s + std::string(65536, 'a')})));
}

// Whatever the bytes, reading ends, and what was read can be written and read again.
TEST(BinaryPropertyList, SurvivesDamage) {
    const PropertyList list{Dictionary{{"a", {Array{whole(1), text("é"), {PropertyList::Data{"xyz"}}, {2.5}, {true}}}},
                                       {"b", {Dictionary{{"c", {Array{}}}, {"CF$UID", whole(4)}}}}}};
    const auto bytes = encoded(list);
    std::mt19937 random(7);
    std::size_t readable = 0;
    for (int round = 0; round < 5000; ++round) {
        auto damaged = bytes;
        for (auto hits = random() % 4 + 1; hits > 0; --hits)
            damaged[random() % damaged.size()] = static_cast<char>(random());
        const auto read = decoded(damaged);
        if (!read) continue;
        ++readable;
        EXPECT_TRUE(decoded(encoded(*read)));
    }
    EXPECT_GT(readable, 0u);
}

} // namespace
} // namespace testing
} // namespace tallyfoot
