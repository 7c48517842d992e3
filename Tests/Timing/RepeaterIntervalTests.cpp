#include "Tallyfoot/Recording/Timing/RepeaterInterval.h"

#include <gtest/gtest.h>

#include <limits>

namespace tallyfoot {
namespace {

constexpr auto largest = std::numeric_limits<std::int64_t>::max();
constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(RepeaterInterval, SmallUnitsStayUnchanged) {
    EXPECT_EQ(RepeaterInterval::nanoseconds(largest).value(), DispatchTimeInterval::nanoseconds(largest));
    EXPECT_EQ(RepeaterInterval::microseconds(-5).value(), DispatchTimeInterval::microseconds(-5));
    EXPECT_EQ(RepeaterInterval::milliseconds(smallest).value(), DispatchTimeInterval::milliseconds(smallest));
}

TEST(RepeaterInterval, TwoMinutesAre120Seconds) {
    EXPECT_EQ(RepeaterInterval::minutes(2).value(), DispatchTimeInterval::seconds(120));
}

TEST(RepeaterInterval, AnHourIs3600Seconds) {
    EXPECT_EQ(RepeaterInterval::hours(1).value(), DispatchTimeInterval::seconds(3600));
}

TEST(RepeaterInterval, ADayIs86400Seconds) {
    EXPECT_EQ(RepeaterInterval::days(1).value(), DispatchTimeInterval::seconds(86400));
    EXPECT_EQ(RepeaterInterval::days(-2).value(), DispatchTimeInterval::seconds(-172800));
}

TEST(RepeaterInterval, OneAndAHalfSecondsAre1500Milliseconds) {
    EXPECT_EQ(RepeaterInterval::seconds(1.5).value(), DispatchTimeInterval::milliseconds(1500));
}

TEST(RepeaterInterval, SecondsAreTruncatedToMilliseconds) {
    EXPECT_EQ(RepeaterInterval::seconds(1.9996).value(), DispatchTimeInterval::milliseconds(1999));
    EXPECT_EQ(RepeaterInterval::seconds(0.0009).value(), DispatchTimeInterval::milliseconds(0));
    EXPECT_EQ(RepeaterInterval::seconds(-1.9996).value(), DispatchTimeInterval::milliseconds(-1999));
}

TEST(RepeaterInterval, TheLargestThatFitIsConverted) {
    EXPECT_EQ(RepeaterInterval::minutes(largest / 60).value(), DispatchTimeInterval::seconds(largest / 60 * 60));
    EXPECT_EQ(RepeaterInterval::hours(smallest / 3600).value(), DispatchTimeInterval::seconds(smallest / 3600 * 3600));
    EXPECT_EQ(RepeaterInterval::seconds(9.2e15).value(), DispatchTimeInterval::milliseconds(9'200'000'000'000'000'000));
}

TEST(RepeaterIntervalDeathTest, MultiplicationsTrapOnOverflow) {
    EXPECT_DEATH(RepeaterInterval::minutes(largest / 60 + 1).value(), "overflow");
    EXPECT_DEATH(RepeaterInterval::hours(smallest / 3600 - 1).value(), "overflow");
    EXPECT_DEATH(RepeaterInterval::days(largest).value(), "overflow");
}

TEST(RepeaterIntervalDeathTest, SecondsThatAreNotFiniteAreFatal) {
    EXPECT_DEATH(RepeaterInterval::seconds(std::numeric_limits<double>::quiet_NaN()).value(), "not finite");
    EXPECT_DEATH(RepeaterInterval::seconds(infinity).value(), "not finite");
    EXPECT_DEATH(RepeaterInterval::seconds(-infinity).value(), "not finite");
}

TEST(RepeaterIntervalDeathTest, SecondsBeyondTheRangeOfMillisecondsAreFatal) {
    EXPECT_DEATH(RepeaterInterval::seconds(9'223'372'036'854'776.0).value(), "out of range");
    EXPECT_DEATH(RepeaterInterval::seconds(-9'223'372'036'854'778.0).value(), "out of range");
    EXPECT_DEATH(RepeaterInterval::seconds(1e300).value(), "out of range");
}

TEST(RepeaterInterval, TheUnitIsKeptAndTellsIntervalsApart) {
    EXPECT_EQ(RepeaterInterval::minutes(1).unit(), RepeaterInterval::Unit::minutes);
    EXPECT_EQ(RepeaterInterval::seconds(60), RepeaterInterval::seconds(60));
    EXPECT_NE(RepeaterInterval::minutes(1), RepeaterInterval::seconds(60));
}

} // namespace
} // namespace tallyfoot
