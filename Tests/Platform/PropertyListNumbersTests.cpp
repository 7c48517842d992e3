#include "Tallyfoot/Platform/PropertyListNumbers.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>

namespace tallyfoot::testing {

namespace {

constexpr auto most = std::numeric_limits<std::int64_t>::max();
constexpr auto least = std::numeric_limits<std::int64_t>::min();
constexpr auto endless = std::numeric_limits<double>::infinity();

std::int64_t integer(const char* text) { return integerValue({std::string(text)}); }

double real(const char* text) { return realValue({std::string(text)}); }

TEST(IntegerValue, OfATextIsItsLeadingDigits) {
    EXPECT_EQ(integer("42"), 42);
    EXPECT_EQ(integer("42 and more"), 42);
    EXPECT_EQ(integer("12.9"), 12);
    EXPECT_EQ(integer(" \t\n-17"), -17);
    EXPECT_EQ(integer("+17"), 17);
    EXPECT_EQ(integer("007"), 7);
}

TEST(IntegerValue, OfATextWithoutLeadingDigitsIsZero) {
    for (const char* text : {"", " ", "a1", "-", "+", "+-1", "--1", "- 1", ".5", "0x10"})
        EXPECT_EQ(integer(text), 0) << text;
}

TEST(IntegerValue, OfATextIsExactToItsLimitsAndStaysThere) {
    EXPECT_EQ(integer("9223372036854775807"), most);
    EXPECT_EQ(integer("-9223372036854775808"), least);
    EXPECT_EQ(integer("9223372036854775808"), most);
    EXPECT_EQ(integer("-99999999999999999999999"), least);
}

TEST(IntegerValue, OfARealIsCutOffAndStaysInItsLimits) {
    EXPECT_EQ(integerValue({2.9}), 2);
    EXPECT_EQ(integerValue({-2.9}), -2);
    EXPECT_EQ(integerValue({1e300}), most);
    EXPECT_EQ(integerValue({-endless}), least);
    EXPECT_EQ(integerValue({9223372036854775808.0}), most);
    EXPECT_EQ(integerValue({-9223372036854775808.0}), least);
    EXPECT_EQ(integerValue({std::nan("")}), 0);
}

TEST(IntegerValue, OfOtherValuesIsZeroOrOne) {
    EXPECT_EQ(integerValue({true}), 1);
    EXPECT_EQ(integerValue({false}), 0);
    EXPECT_EQ(integerValue({PropertyList::Data{"7"}}), 0);
    EXPECT_EQ(integerValue({PropertyList::Array{{std::int64_t{7}}}}), 0);
    EXPECT_EQ(integerValue({PropertyList::Dictionary{}}), 0);
}

TEST(RealValue, OfATextIsItsLeadingNumber) {
    EXPECT_EQ(real("1.5"), 1.5);
    EXPECT_EQ(real(" -1.5e3 seconds"), -1500);
    EXPECT_EQ(real("+.25"), 0.25);
    EXPECT_EQ(real("7"), 7);
    EXPECT_EQ(real("5e"), 5);
}

TEST(RealValue, OfATextWithoutALeadingNumberIsZero) {
    for (const char* text : {"", "a", "-", "inf", "nan", "-infinity", "+-1", "."}) EXPECT_EQ(real(text), 0) << text;
    EXPECT_EQ(real("0x10"), 0);
}

TEST(RealValue, BeyondTheRangeIsEndlessOrZero) {
    EXPECT_EQ(real("1e400"), endless);
    EXPECT_EQ(real("-1e400"), -endless);
    EXPECT_EQ(real("1e-400"), 0);
    EXPECT_EQ(real((std::string(400, '9') + ".0").c_str()), endless);
    EXPECT_EQ(real(("0." + std::string(400, '0') + "1").c_str()), 0);
}

TEST(RealValue, OfOtherValues) {
    EXPECT_EQ(realValue({std::int64_t{-3}}), -3);
    EXPECT_EQ(realValue({true}), 1);
    EXPECT_EQ(realValue({PropertyList::Array{}}), 0);
}

TEST(RealValue, DoesNotFollowTheLocale) {
    const char* locale = std::setlocale(LC_ALL, "de_DE.UTF-8");
    EXPECT_EQ(real("1.5"), 1.5) << (locale != nullptr ? locale : "no other locale is installed");
}

} // namespace

} // namespace tallyfoot::testing
