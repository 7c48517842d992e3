#include "Tallyfoot/Facade/Configuration/Endpoint.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace tallyfoot::testing {
namespace {

TEST(Endpoint, KnownIntegersMakeOne) {
    EXPECT_EQ(fromRawValue<Endpoint>(0), Endpoint::dev);
    EXPECT_EQ(fromRawValue<Endpoint>(1), Endpoint::uat);
    EXPECT_EQ(fromRawValue<Endpoint>(2), Endpoint::prod);
}

TEST(Endpoint, UnknownIntegersMakeNone) {
    for (const std::int64_t number :
         {std::int64_t{-1}, std::int64_t{3}, std::int64_t{4294967296 + 2}, std::numeric_limits<std::int64_t>::min(),
          std::numeric_limits<std::int64_t>::max()})
        EXPECT_EQ(fromRawValue<Endpoint>(number), std::nullopt) << number;
}

TEST(Endpoint, EachHasItsKey) {
    EXPECT_EQ(uploadBaseKey(Endpoint::dev), "dev");
    EXPECT_EQ(uploadBaseKey(Endpoint::uat), "uat");
    EXPECT_EQ(uploadBaseKey(Endpoint::prod), "prod");
}

} // namespace
} // namespace tallyfoot::testing
