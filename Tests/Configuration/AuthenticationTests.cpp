#include "Tallyfoot/Facade/Configuration/Authentication.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace tallyfoot::testing {
namespace {

TEST(Authentication, KeepsWhatItWasGiven) {
    const Authentication authentication("user-1", "token-1", "2024-05-01 08:00");
    EXPECT_EQ(authentication.userId(), "user-1");
    EXPECT_EQ(authentication.authenticationToken(), "token-1");
    EXPECT_EQ(authentication.userLogOnTime(), "2024-05-01 08:00");
}

TEST(Authentication, TakesWhatIsIllFormedInAUserIdForAReplacementCharacter) {
    const Authentication authentication("J\xFCrgen", "\xFC");
    EXPECT_EQ(authentication.userId(), "J\xEF\xBF\xBDrgen");
    EXPECT_EQ(authentication.authenticationToken(), "\xFC"); // the server's own bytes
}

TEST(Authentication, NeedsNoLogOnTime) { EXPECT_EQ(Authentication("user-1", "token-1").userLogOnTime(), std::nullopt); }

TEST(Authentication, CannotBeMadeOfNothing) { EXPECT_FALSE(std::is_default_constructible_v<Authentication>); }

} // namespace
} // namespace tallyfoot::testing
