#include "Tallyfoot/Facade/Configuration/Size.h"

#include <gtest/gtest.h>

namespace tallyfoot::testing {
namespace {

TEST(Size, EachUnitHasItsFactor) {
    EXPECT_EQ(Size::bytes(3).inBytes(), 3.0F);
    EXPECT_EQ(Size::KB(3).inBytes(), 3072.0F);
    EXPECT_EQ(Size::MB(3).inBytes(), 3145728.0F);
    EXPECT_EQ(Size::GB(3).inBytes(), 3221225472.0F);
}

TEST(Size, ATerabyteCountsAsAGigabyte) { EXPECT_EQ(Size::TB(3).inBytes(), Size::GB(3).inBytes()); }

TEST(Size, BytesAreIn32BitFloatingPoint) { EXPECT_EQ(Size::bytes(16777217).inBytes(), 16777216.0F); }

} // namespace
} // namespace tallyfoot::testing
