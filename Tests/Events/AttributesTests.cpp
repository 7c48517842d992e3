#include "Tallyfoot/Events/Attributes.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace tallyfoot {
namespace {

using Entries = std::vector<std::pair<LogAttribute, std::string>>;

Entries entries(const Attributes& attributes) {
    Entries all;
    attributes.forEach([&](LogAttribute key, const std::string& text) { all.emplace_back(key, text); });
    return all;
}

TEST(Attributes, AreEmptyAtFirst) {
    const Attributes attributes;
    EXPECT_TRUE(attributes.empty());
    EXPECT_EQ(attributes.size(), 0U);
    EXPECT_EQ(attributes.find(LogAttribute::evtId), nullptr);
    EXPECT_TRUE(entries(attributes).empty());
}

TEST(Attributes, EnumerateInDeclarationOrder) {
    const Attributes attributes{
        {LogAttribute::windowDim, "last"}, {LogAttribute::evtId, "middle"}, {LogAttribute::appName, "first"}};
    EXPECT_EQ(entries(attributes), (Entries{{LogAttribute::appName, "first"},
                                            {LogAttribute::evtId, "middle"},
                                            {LogAttribute::windowDim, "last"}}));
}

TEST(Attributes, AnEmptyTextIsAnEntry) {
    Attributes attributes;
    attributes.set(LogAttribute::screenTitle, "");
    EXPECT_EQ(attributes.size(), 1U);
    ASSERT_NE(attributes.find(LogAttribute::screenTitle), nullptr);
    EXPECT_EQ(*attributes.find(LogAttribute::screenTitle), "");
    EXPECT_NE(attributes, Attributes());
}

TEST(Attributes, AMissingTextIsAnEmptyOne) {
    const char* missing = nullptr;
    Attributes attributes;
    attributes.set(LogAttribute::evtLabel, missing);
    EXPECT_EQ(attributes, (Attributes{{LogAttribute::evtLabel, ""}}));
    EXPECT_EQ((Attributes{{LogAttribute::evtLabel, missing}, {LogAttribute::evtId, nullptr}}),
              (Attributes{{LogAttribute::evtLabel, ""}, {LogAttribute::evtId, ""}}));
}

TEST(Attributes, AZeroByteIsPartOfAText) {
    Attributes attributes;
    attributes.set(LogAttribute::evtLabel, std::string_view("a\0b", 3));
    EXPECT_EQ(attributes.find(LogAttribute::evtLabel)->size(), 3U);
}

TEST(Attributes, OnAKeyGivenTwiceTheLaterTextWins) {
    const Attributes attributes{{LogAttribute::evtLabel, "earlier"}, {LogAttribute::evtLabel, "later"}};
    EXPECT_EQ(entries(attributes), (Entries{{LogAttribute::evtLabel, "later"}}));
}

TEST(Attributes, ARemovedEntryIsGone) {
    Attributes attributes{{LogAttribute::evtLabel, "Buy"}, {LogAttribute::evtId, "1"}};
    attributes.remove(LogAttribute::evtLabel);
    attributes.remove(LogAttribute::userId);
    EXPECT_EQ(attributes, (Attributes{{LogAttribute::evtId, "1"}}));
}

TEST(Attributes, TextKeysThatAreNoRecordKeysAreDropped) {
    const auto attributes = Attributes::fromTexts({{"pgName", " Basket "}, {"foo", "bar"}});
    EXPECT_EQ(entries(attributes), (Entries{{LogAttribute::screenTitle, " Basket "}}));
}

TEST(Attributes, NamesOfCasesAreDroppedToo) {
    EXPECT_TRUE(Attributes::fromTexts({{"screenTitle", "a"}, {"window", "b"}, {"windowDim", "c"}, {"crashReason", "d"}})
                    .empty());
    EXPECT_EQ(Attributes::fromTexts({{"crashreason", "d"}}), (Attributes{{LogAttribute::crashReason, "d"}}));
}

TEST(Attributes, AddingAddsEveryEntryAndTheAddedTextWins) {
    Attributes attributes{{LogAttribute::evtLabel, "mine"}, {LogAttribute::evtId, "1"}};
    attributes += {{LogAttribute::evtLabel, "yours"}, {LogAttribute::userId, "u"}};
    EXPECT_EQ(attributes,
              (Attributes{{LogAttribute::evtLabel, "yours"}, {LogAttribute::evtId, "1"}, {LogAttribute::userId, "u"}}));
}

TEST(Attributes, AddedToThemselvesStayTheSame) {
    Attributes attributes{{LogAttribute::evtLabel, "a label that is too long to be kept in place"}};
    const Attributes before = attributes;
    attributes += attributes; // NOLINT
    EXPECT_EQ(attributes, before);
}

TEST(Attributes, AreCopiedByValue) {
    Attributes original{{LogAttribute::evtLabel, "Buy"}};
    const Attributes copy = original;
    original.set(LogAttribute::evtLabel, "Sell");
    EXPECT_EQ(*copy.find(LogAttribute::evtLabel), "Buy");
}

TEST(Attributes, BehaveAsAMapDoes) {
    std::mt19937 random(7);
    Attributes attributes;
    std::map<LogAttribute, std::string> map;
    for (int step = 0; step < 20000; ++step) {
        const auto key = static_cast<LogAttribute>(random() % logAttributeTexts.size());
        if (random() % 3 == 0) {
            attributes.remove(key);
            map.erase(key);
        } else {
            const std::string text(random() % 40, 'x');
            attributes.set(key, std::string_view(text));
            map[key] = text;
        }
        ASSERT_EQ(attributes.size(), map.size());
        ASSERT_EQ(attributes.contains(key), map.contains(key));
    }
    EXPECT_EQ(entries(attributes), Entries(map.begin(), map.end()));
}

TEST(Attributes, AKeyThatIsNoneOfTheCasesIsDropped) {
    for (const int number : {18, 31, 32, 64, -1}) {
        const auto key = static_cast<LogAttribute>(number);
        Attributes attributes{{key, "x"}};
        attributes.set(key, std::string("x"));
        attributes.remove(key);
        EXPECT_TRUE(attributes.empty());
        EXPECT_FALSE(attributes.contains(key));
        EXPECT_EQ(attributes.find(key), nullptr);
    }
}

} // namespace
} // namespace tallyfoot
