#include "Contracts/Implementation.h"
#include "Support/ManualClock.h"

#include "Tallyfoot/Platform/Posix/PosixClock.h"

#include <gtest/gtest.h>

#include <memory>

namespace tallyfoot::testing {

namespace {

using namespace std::chrono_literals;

class ClockContract : public ::testing::TestWithParam<Implementation<Clock>> {};

TEST_P(ClockContract, TellsADateOfThisCentury) {
    const auto now = GetParam().make()->now();
    EXPECT_GT(timeIntervalSince1970(now), 1'600'000'000.0);
    EXPECT_LT(timeIntervalSince1970(now), 4'102'444'800.0);
}

TEST_P(ClockContract, DoesNotRunBackByItself) {
    const auto clock = GetParam().make();
    const auto earlier = clock->now();
    EXPECT_GE(clock->now(), earlier);
}

INSTANTIATE_TEST_SUITE_P(
    All, ClockContract,
    ::testing::Values(Implementation<Clock>{"Posix", [] { return std::make_shared<PosixClock>(); }},
                      Implementation<Clock>{"Manual", [] { return std::make_shared<ManualClock>(); }}),
    nameOfImplementation);

TEST(PosixClock, AgreesWithTheSystemsClock) {
    const auto before = std::chrono::system_clock::now();
    const auto now = PosixClock().now();
    const auto after = std::chrono::system_clock::now();
    EXPECT_GE(now, before);
    EXPECT_LE(now, after);
}

TEST(ManualClock, StandsStillUntilItIsMoved) {
    ManualClock clock;
    const auto start = clock.now();
    EXPECT_EQ(clock.now(), start);
    clock.advance(90s);
    EXPECT_EQ(clock.now(), start + 90s);
    clock.set(start - 1h);
    EXPECT_EQ(clock.now(), start - 1h);
}

TEST(Clock, SecondsSince1970KeepTheFraction) { EXPECT_DOUBLE_EQ(timeIntervalSince1970(Date(1500ms)), 1.5); }

} // namespace

} // namespace tallyfoot::testing
