// Tests that fail, each in a way of its own, to see that whoever runs them says so.
#include <gtest/gtest.h>

#include <cstdlib>

namespace tallyfoot::testing {
namespace {

TEST(Failing, NotAtAll) {}

TEST(Failing, ByAnExpectation) { EXPECT_EQ(1, 2); }

TEST(Failing, ByTheEndOfItsProcess) { std::_Exit(3); }

TEST(Failing, NotAfterOthersHave) {}

} // namespace
} // namespace tallyfoot::testing
