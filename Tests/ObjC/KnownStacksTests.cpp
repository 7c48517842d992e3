#include "TallyfootObjC/GNUstep/KnownStacks.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <vector>

namespace {

using tallyfoot::objc::Code;
using tallyfoot::objc::KnownStacks;
using tallyfoot::objc::Return;

// Words of a stack, of which each second one is where a call returns to.
class KnownStacksTest : public testing::Test {
protected:
    std::vector<Return> returns(std::size_t from, std::size_t to) const {
        std::vector<Return> all;
        for (auto word = from; word < to; word += 2) all.push_back({&stack[word], stack[word]});
        return all;
    }
    void remember(std::size_t from, std::size_t to, bool answer) {
        known.remember(&stack[from], returns(from, to), answer);
    }

    std::array<Code, 1000> stack = [] {
        std::array<Code, 1000> words{};
        for (std::size_t word = 0; word < words.size(); ++word) words[word] = 0x1000 + word;
        return words;
    }();
    KnownStacks known;
};

TEST_F(KnownStacksTest, KnowsNothingAtFirst) { EXPECT_EQ(known.answer(&stack[0]), std::nullopt); }

TEST_F(KnownStacksTest, KnowsTheAnswerWhileEachAddressIsInItsPlace) {
    remember(0, 10, true);
    EXPECT_EQ(known.answer(&stack[0]), true);
    stack[3] = 7; // no return address
    EXPECT_EQ(known.answer(&stack[0]), true);
    stack[8] = 7;
    EXPECT_EQ(known.answer(&stack[0]), std::nullopt);
}

TEST_F(KnownStacksTest, KnowsTheSameCallsInAnotherPlaceNoMore) {
    remember(0, 10, true);
    EXPECT_EQ(known.answer(&stack[2]), std::nullopt);
}

TEST_F(KnownStacksTest, KnowsOneStackFromAnother) {
    remember(0, 10, true);
    stack[4] = 7;
    remember(0, 12, false);
    EXPECT_EQ(known.answer(&stack[0]), false);
    stack[4] = 0x1004;
    EXPECT_EQ(known.answer(&stack[0]), true);
}

TEST_F(KnownStacksTest, ForgetsTheOldestOfFive) {
    for (std::size_t first = 0; first < 10; first += 2) remember(first, 20, true);
    EXPECT_EQ(known.answer(&stack[0]), std::nullopt);
    for (std::size_t first = 2; first < 10; first += 2) EXPECT_EQ(known.answer(&stack[first]), true);
}

TEST_F(KnownStacksTest, DoesNotKeepWhatItCouldNotFindAgain) {
    auto elsewhere = returns(0, 10);
    elsewhere[2].address = 7;
    known.remember(&stack[0], elsewhere, true);
    known.remember(&stack[2], returns(0, 10), true);
    known.remember(&stack[0], {}, true);
    EXPECT_EQ(known.answer(&stack[0]), std::nullopt);
    EXPECT_EQ(known.answer(&stack[2]), std::nullopt);
}

TEST_F(KnownStacksTest, KeepsNoStackThatIsVeryDeep) {
    remember(0, 512, true);
    EXPECT_EQ(known.answer(&stack[0]), true);
    remember(2, 516, true);
    EXPECT_EQ(known.answer(&stack[2]), std::nullopt);
}

} // namespace
