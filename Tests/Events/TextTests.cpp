#include "Tallyfoot/Events/DateFormatter.h"
#include "Tallyfoot/Events/Text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <thread>
#include <vector>

namespace tallyfoot {
namespace {

constexpr std::string_view family = "\U0001F468\u200D\U0001F469\u200D\U0001F467"; // three people, one character
constexpr std::string_view flag = "\U0001F1E9\U0001F1EA";
constexpr std::string_view accented = "e\u0301";

TEST(Text, DataAreTheTextsBytes) {
    EXPECT_EQ(text::utf8Data("a\u00E9"), "a\xC3\xA9");
    EXPECT_EQ(text::utf8Data(""), "");
    EXPECT_EQ(text::utf8Data(std::string_view("a\0b", 3)), std::string("a\0b", 3));
}

TEST(Text, IllFormedTextHasNoData) {
    EXPECT_EQ(text::utf8Data("a\x80"), std::nullopt);
    EXPECT_EQ(text::utf8Data("0123456789\xE2\x82"), std::nullopt);
}

TEST(Text, BytesAlwaysDecode) {
    EXPECT_EQ(text::utf8String("plain \u00E9\u4E2D\U0001F600"), "plain \u00E9\u4E2D\U0001F600");
    EXPECT_EQ(text::utf8String(""), "");
    EXPECT_EQ(text::utf8String("a\xE2\x82z\xFF"), "a\uFFFDz\uFFFD");
    EXPECT_EQ(text::utf8String("\xF0\x9F\x98\x80\xF0\x9F"), "\U0001F600\uFFFD");
}

// Decodes by the definition: a code point, its shortest form, no surrogates.
bool isWellFormedByDefinition(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const auto lead = static_cast<unsigned char>(bytes[at]);
        const std::size_t length = lead < 0x80   ? 1
                                   : lead < 0xC0 ? 0
                                   : lead < 0xE0 ? 2
                                   : lead < 0xF0 ? 3
                                   : lead < 0xF8 ? 4
                                                 : 0;
        if (length == 0 || at + length > bytes.size()) return false;
        std::uint32_t point = length == 1 ? lead : lead & (0x7FU >> length);
        for (std::size_t next = 1; next < length; ++next) {
            const auto byte = static_cast<unsigned char>(bytes[at + next]);
            if ((byte & 0xC0) != 0x80) return false;
            point = (point << 6) | (byte & 0x3F);
        }
        constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
        if (point < smallest[length] || point > 0x10FFFF || (point >= 0xD800 && point <= 0xDFFF)) return false;
        at += length;
    }
    return true;
}

TEST(Text, WellFormednessIsTheDefinitions) {
    std::mt19937 random(17);
    const std::string alphabet =
        "a\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xED\xEE\xEF\xF0\xF1\xF3\xF4\xF5\xFF";
    int wellFormed = 0;
    for (int round = 0; round < 300'000; ++round) {
        std::string bytes(random() % 5 + (round % 3 == 0 ? 8 : 0), 'x');
        for (auto place = bytes.size() - std::min<std::size_t>(bytes.size(), 5); place < bytes.size(); ++place)
            bytes[place] = alphabet[random() % alphabet.size()];
        const bool expected = isWellFormedByDefinition(bytes);
        wellFormed += expected ? 1 : 0;
        ASSERT_EQ(text::isWellFormed(bytes), expected) << ::testing::PrintToString(bytes);
        const auto decoded = text::utf8String(bytes);
        ASSERT_TRUE(isWellFormedByDefinition(decoded)) << ::testing::PrintToString(bytes);
        ASSERT_EQ(decoded == bytes, expected) << ::testing::PrintToString(bytes);
    }
    EXPECT_GT(wellFormed, 10'000);
}

TEST(Text, NothingIsLeftOfWhiteSpace) {
    EXPECT_TRUE(text::isEmptyBySpaceTrim(""));
    EXPECT_TRUE(text::isEmptyBySpaceTrim(" \t\n\v\f\r"));
    EXPECT_TRUE(text::isEmptyBySpaceTrim("\u0085\u00A0\u1680\u2000\u2001\u200A\u200B\u2028\u2029\u202F\u205F\u3000"));
    EXPECT_FALSE(text::isEmptyBySpaceTrim(" x "));
    EXPECT_FALSE(text::isEmptyBySpaceTrim("\u200C")) << "a joiner is no space";
    EXPECT_FALSE(text::isEmptyBySpaceTrim("\uFEFF"));
    EXPECT_FALSE(text::isEmptyBySpaceTrim("\x1F"));
    EXPECT_FALSE(text::isEmptyBySpaceTrim(std::string_view("\0", 1)));
    EXPECT_FALSE(text::isEmptyBySpaceTrim("\x85")) << "a byte that is no text";
}

TEST(Text, APrefixIsPutInFrontWithAHyphen) {
    EXPECT_EQ(text::prefix("x", "p"), "p-x");
    EXPECT_EQ(text::prefix("", "p"), "p-");
}

TEST(Text, ABlankPrefixIsNone) {
    EXPECT_EQ(text::prefix("x", "  "), "x");
    EXPECT_EQ(text::prefix("x", ""), "x");
    EXPECT_EQ(text::prefix("", "\u3000\n"), "");
}

TEST(Text, APrefixIsUsedUntrimmed) { EXPECT_EQ(text::prefix("x", " p "), " p -x"); }

TEST(Text, ACandidateIsPreferredUnlessItIsBlank) {
    EXPECT_EQ(text::prefer("x", "p"), "p");
    EXPECT_EQ(text::prefer("x", " p "), " p ");
    EXPECT_EQ(text::prefer("x", " \n"), "x");
    EXPECT_EQ(text::prefer("x", ""), "x");
    EXPECT_EQ(text::prefer("", ""), "");
}

TEST(Text, StringAfterIsWhatFollowsTheFirstOccurrence) {
    EXPECT_EQ(text::stringAfter("a=b=c", "="), "b=c");
    EXPECT_EQ(text::stringAfter("a=", "="), "");
    EXPECT_EQ(text::stringAfter("title=Done", "title="), "Done");
    EXPECT_EQ(text::stringAfter("abc", "x"), std::nullopt);
    EXPECT_EQ(text::stringAfter("", "x"), std::nullopt);
}

TEST(Text, SearchesAreLiteral) {
    EXPECT_EQ(text::stringAfter("ABC", "b"), std::nullopt) << "case counts";
    EXPECT_EQ(text::stringAfter("x\u00E9y", "e\u0301"), std::nullopt) << "composed forms count";
    EXPECT_EQ(text::stringAfter("xe\u0301y", "e"), "\u0301y") << "characters do not";
}

TEST(Text, AnEmptyTextIsFoundNowhere) {
    EXPECT_EQ(text::stringAfter("abc", ""), std::nullopt);
    EXPECT_EQ(text::slice("abc", "", "c"), std::nullopt);
    EXPECT_EQ(text::slice("abc", "a", ""), std::nullopt);
    const std::string_view list[] = {""};
    EXPECT_FALSE(text::contains("abc", list));
}

TEST(Text, ASliceLiesBetweenTwoMarkers) {
    EXPECT_EQ(text::slice("<title='Done' x>", "title='", "'"), "Done");
    EXPECT_EQ(text::slice("aXbXc", "X", "X"), "b");
    EXPECT_EQ(text::slice("ab", "a", "b"), "");
    EXPECT_EQ(text::slice("b a", "a", "b"), std::nullopt) << "the second marker must follow the first";
    EXPECT_EQ(text::slice("aa", "aa", "a"), std::nullopt) << "and not overlap it";
    EXPECT_EQ(text::slice("abc", "x", "c"), std::nullopt);
    EXPECT_EQ(text::slice("abc", "a", "x"), std::nullopt);
}

TEST(Text, DeletingASuffixTestsForAPrefix) {
    EXPECT_EQ(text::deletingSuffix("abcabc", "abc"), "abc");
    EXPECT_EQ(text::deletingSuffix("xabc", "abc"), "xabc");
    EXPECT_EQ(text::deletingSuffix("abcd", "ab"), "ab");
    EXPECT_EQ(text::deletingSuffix("abc", "abc"), "");
    EXPECT_EQ(text::deletingSuffix("abc", ""), "abc");
    EXPECT_EQ(text::deletingSuffix("", "abc"), "");
}

TEST(Text, DeletingASuffixCountsCharacters) {
    EXPECT_EQ(text::deletingSuffix(std::string(accented) + "xyz", accented), std::string(accented) + "xy");
    EXPECT_EQ(text::deletingSuffix("xy" + std::string(family), "x"), "xy");
    EXPECT_EQ(text::deletingSuffix("\r\nxyz", "\r\n"), "\r\nxy");
    EXPECT_EQ(text::deletingSuffix(std::string(flag) + std::string(family), flag), flag);
}

TEST(Text, APieceOfTheFirstCharacterIsNoBeginning) {
    EXPECT_EQ(text::deletingSuffix(std::string(accented) + "xyz", "e"), std::string(accented) + "xyz");
    EXPECT_EQ(text::deletingSuffix("\r\n", "\r"), "\r\n");
    EXPECT_EQ(text::deletingSuffix(flag, flag.substr(0, flag.size() / 2)), flag);
    EXPECT_EQ(text::deletingSuffix(family, "\U0001F468"), family);
}

TEST(Text, ContainsAnyOfAList) {
    const std::string_view list[] = {"Scroll", "Swipe"};
    EXPECT_TRUE(text::contains("UIScrollView", list));
    EXPECT_TRUE(text::contains("Swipe", list));
    EXPECT_FALSE(text::contains("swipe", list));
    EXPECT_FALSE(text::contains("", list));
    EXPECT_FALSE(text::contains("UIScrollView", {}));
}

TEST(Text, ADateIsReadByItsPattern) {
    const auto date = text::date("07-03-2024T14-05-09-123", "dd-MM-yyyy'T'HH-mm-ss-SSS");
    ASSERT_TRUE(date);
    EXPECT_EQ(DateFormatter("yyyy/MM/dd HH:mm:ss.SSS").string(*date), "2024/03/07 14:05:09.123");
    EXPECT_EQ(text::date("07-03-2024T14-05-09-123.log", "dd-MM-yyyy'T'HH-mm-ss-SSS"), std::nullopt);
    EXPECT_EQ(text::date("30-02-2024", "dd-MM-yyyy"), std::nullopt);
    EXPECT_EQ(text::date("", "yyyy"), std::nullopt);
}

TEST(Text, LengthCountsCharacters) {
    EXPECT_EQ(text::length(""), 0U);
    EXPECT_EQ(text::length("abc"), 3U);
    EXPECT_EQ(text::length(accented), 1U);
    EXPECT_EQ(text::length(family), 1U);
    EXPECT_EQ(text::length(flag), 1U);
    EXPECT_EQ(text::length("\u00E9a\u4E2D"), 3U);
    EXPECT_EQ(text::length(std::string(flag) + std::string(flag)), 2U);
}

TEST(Text, ALineBreakOfTwoControlsIsOneCharacter) {
    EXPECT_EQ(text::length("\r\n"), 1U);
    EXPECT_EQ(text::length("a\r\nb"), 3U);
    EXPECT_EQ(text::length("\r\r\n\n"), 3U);
    EXPECT_EQ(text::length("\u00E9\r\n"), 2U) << "beyond ASCII, too";
    EXPECT_EQ(text::character("a\r\nb", 1), "\r\n");
}

TEST(Text, AnIllFormedSequenceIsOneCharacterAndIsKept) {
    EXPECT_EQ(text::length("a\x80z"), 3U);
    EXPECT_EQ(text::length("a\xE2\x82z"), 3U);
    EXPECT_EQ(text::character("a\xE2\x82z", 1), "\xE2\x82");
}

TEST(Text, ACharacterByItsIndex) {
    const std::string text = "a" + std::string(family) + std::string(accented);
    EXPECT_EQ(text::character(text, 0), "a");
    EXPECT_EQ(text::character(text, 1), family);
    EXPECT_EQ(text::character(text, 2), accented);
}

TEST(Text, ACharacterOutsideIsEmpty) {
    EXPECT_EQ(text::character("abc", 3), "");
    EXPECT_EQ(text::character("abc", -1), "");
    EXPECT_EQ(text::character("", 0), "");
    EXPECT_EQ(text::character("abc", std::numeric_limits<std::ptrdiff_t>::max()), "");
    EXPECT_EQ(text::character("abc", std::numeric_limits<std::ptrdiff_t>::min()), "");
}

TEST(Text, ARangeIsClampedIntoTheText) {
    EXPECT_EQ(text::characters("abcd", 1, 3), "bc");
    EXPECT_EQ(text::characters("abcd", -5, 2), "ab");
    EXPECT_EQ(text::characters("abcd", 2, 100), "cd");
    EXPECT_EQ(text::characters("abcd", 2, 2), "");
    EXPECT_EQ(text::characters("abcd", 50, 100), "");
    EXPECT_EQ(text::characters("abcd", -3, -1), "");
    EXPECT_EQ(text::characters("abcd", 100, 50), "") << "both bounds are the end once clamped";
    EXPECT_EQ(text::characters("abcd", -1, -3), "");
    EXPECT_EQ(text::characters("x" + std::string(family) + "y", 1, 2), family);
}

TEST(TextDeathTest, ARangeThatRunsBackwardsIsFatal) {
    EXPECT_DEATH(text::characters("abcd", 3, 1), "range of characters");
    EXPECT_DEATH(text::characters("abcd", 100, 1), "range of characters");
    EXPECT_DEATH(text::characters("abcd", 1, -1), "range of characters");
}

TEST(Text, SubstringFromAnIndex) {
    EXPECT_EQ(text::substringFromIndex("abcd", 1), "bcd");
    EXPECT_EQ(text::substringFromIndex("abcd", 0), "abcd");
    EXPECT_EQ(text::substringFromIndex("abcd", 4), "");
    EXPECT_EQ(text::substringFromIndex("abcd", 100), "");
    EXPECT_EQ(text::substringFromIndex("abcd", -3), "abcd");
    EXPECT_EQ(text::substringFromIndex("a" + std::string(family) + "b", 2), "b");
}

TEST(Text, SubstringToAnIndex) {
    EXPECT_EQ(text::substringToIndex("abcd", 2), "ab");
    EXPECT_EQ(text::substringToIndex("abcd", 0), "");
    EXPECT_EQ(text::substringToIndex("abcd", -3), "");
    EXPECT_EQ(text::substringToIndex("abcd", 100), "abcd");
    EXPECT_EQ(text::substringToIndex(std::string(family) + "b", 1), family);
}

TEST(Text, PiecesMakeUpTheWhole) {
    std::mt19937 random(23);
    const std::string_view pieces[] = {"a",      "\r",     "\n",   accented, family, flag,
                                       "\u0301", "\u200D", "\x80", "\u4E2D", " "};
    for (int round = 0; round < 2000; ++round) {
        std::string whole;
        for (auto left = random() % 8; left > 0; --left) whole += pieces[random() % std::size(pieces)];
        const auto length = static_cast<std::ptrdiff_t>(text::length(whole));
        std::string joined;
        for (std::ptrdiff_t index = 0; index < length; ++index) {
            ASSERT_NE(text::character(whole, index), "");
            joined += text::character(whole, index);
            ASSERT_EQ(text::substringToIndex(whole, index) + text::substringFromIndex(whole, index), whole);
        }
        ASSERT_EQ(joined, whole) << ::testing::PrintToString(whole);
    }
}

TEST(Text, CharactersAreCountedByManyThreadsAtOnce) {
    const std::string whole = std::string(family) + "x" + std::string(accented);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 16; ++thread)
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) EXPECT_EQ(text::length(whole), 3U);
        });
    for (auto& thread : threads) thread.join();
}

TEST(Text, AnEndingThreadMayStillCountCharacters) {
    struct LastWord {
        ~LastWord() {
            if (length != nullptr) *length = text::length(family);
        }
        std::size_t* length = nullptr;
    };
    std::size_t length = 0;
    std::thread([&] {
        thread_local LastWord lastWord;
        lastWord.length = &length;
        EXPECT_EQ(text::length(accented), 1U);
    }).join();
    EXPECT_EQ(length, 1U);
}

} // namespace
} // namespace tallyfoot
