#include "Tallyfoot/Recording/Timing/DispatchTimeInterval.h"

#include <gtest/gtest.h>

#include <limits>

namespace tallyfoot {
namespace {

using namespace std::chrono_literals;
constexpr auto largest = std::numeric_limits<std::int64_t>::max();
constexpr auto smallest = std::numeric_limits<std::int64_t>::min();

TEST(DispatchTimeInterval, EveryUnitCountsInSeconds) {
    EXPECT_EQ(DispatchTimeInterval::seconds(7).timeInterval(), 7.0);
    EXPECT_EQ(DispatchTimeInterval::milliseconds(1500).timeInterval(), 1500 * 0.001);
    EXPECT_EQ(DispatchTimeInterval::microseconds(250).timeInterval(), 250 * 0.000001);
    EXPECT_EQ(DispatchTimeInterval::nanoseconds(3).timeInterval(), 3 * 0.000000001);
    EXPECT_EQ(DispatchTimeInterval::seconds(-2).timeInterval(), -2.0);
}

TEST(DispatchTimeInterval, NeverIsTheLargestFiniteDouble) {
    EXPECT_EQ(DispatchTimeInterval::never().timeInterval(), std::numeric_limits<double>::max());
}

TEST(DispatchTimeInterval, DurationKeepsEveryNanosecond) {
    EXPECT_EQ(DispatchTimeInterval::seconds(2).duration(), 2s);
    EXPECT_EQ(DispatchTimeInterval::milliseconds(1500).duration(), 1500ms);
    EXPECT_EQ(DispatchTimeInterval::microseconds(-3).duration(), -3us);
    EXPECT_EQ(DispatchTimeInterval::nanoseconds(largest).duration(), std::chrono::nanoseconds(largest));
}

TEST(DispatchTimeInterval, DurationIsClampedToWhatNanosecondsHold) {
    EXPECT_EQ(DispatchTimeInterval::seconds(largest).duration(), std::chrono::nanoseconds::max());
    EXPECT_EQ(DispatchTimeInterval::milliseconds(smallest).duration(), std::chrono::nanoseconds::min());
    EXPECT_EQ(DispatchTimeInterval::seconds(9'223'372'036).duration(), 9'223'372'036s); // the last that fits
    EXPECT_EQ(DispatchTimeInterval::seconds(9'223'372'037).duration(), std::chrono::nanoseconds::max());
}

TEST(DispatchTimeInterval, NeverLastsForEver) {
    EXPECT_EQ(DispatchTimeInterval::never().duration(), std::chrono::nanoseconds::max());
}

} // namespace
} // namespace tallyfoot
