#include "Tallyfoot/Facade/Configuration/Endpoint.h"

#include <gtest/gtest.h>

#include <limits>

namespace tallyfoot::testing {
namespace {

TEST(Endpoint, KnownIntegersMakeOne) {
    EXPECT_EQ(fromRawValue<Endpoint>(0), Endpoint::dev);
    EXPECT_EQ(fromRawValue<Endpoint>(1), Endpoint::uat);
    EXPECT_EQ(fromRawValue<Endpoint>(2), Endpoint::prod);
}

TEST(Endpoint, UnknownIntegersMakeNone) {
    for (const int number : {-1, 3, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        EXPECT_EQ(fromRawValue<Endpoint>(number), std::nullopt) << number;
}

TEST(Endpoint, EachHasItsKey) {
    EXPECT_EQ(uploadBaseKey(Endpoint::dev), "dev");
    EXPECT_EQ(uploadBaseKey(Endpoint::uat), "uat");
    EXPECT_EQ(uploadBaseKey(Endpoint::prod), "prod");
}

} // namespace
} // namespace tallyfoot::testing
