#include "Tallyfoot/Events/DateDescription.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tallyfoot {
namespace {

using namespace std::chrono_literals;

TEST(DateDescription, IsInUTCDownToTheSecond) {
    EXPECT_EQ(dateDescription(std::chrono::sys_seconds(1709820309s)), "2024-03-07 14:05:09 +0000");
    EXPECT_EQ(dateDescription(1709820309.999), "2024-03-07 14:05:09 +0000");
    EXPECT_EQ(dateDescription(0.0), "1970-01-01 00:00:00 +0000");
    EXPECT_EQ(dateDescription(-0.5), "1969-12-31 23:59:59 +0000");
}

TEST(DateDescription, ReachesBeyondWhatNanosecondsCount) {
    EXPECT_EQ(dateDescription(64092211200.0), "4001-01-01 00:00:00 +0000");
    EXPECT_EQ(dateDescription(-11644473600.0), "1601-01-01 00:00:00 +0000");
}

TEST(DateDescription, OfNoDateIsEmpty) {
    EXPECT_EQ(dateDescription(std::nan("")), "");
    EXPECT_EQ(dateDescription(std::numeric_limits<double>::infinity()), "");
    EXPECT_EQ(dateDescription(-1e300), "");
}

} // namespace
} // namespace tallyfoot
