#include "Tallyfoot/Capture/NumberText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <locale>

namespace tallyfoot {
namespace {

TEST(NumberText, AWholeNumberKeepsOneDecimal) {
    EXPECT_EQ(shortestText(3.0), "3.0");
    EXPECT_EQ(shortestText(0.0), "0.0");
    EXPECT_EQ(shortestText(-0.0), "-0.0");
    EXPECT_EQ(shortestText(-12.0), "-12.0");
    EXPECT_EQ(shortestText(100000.0), "100000.0");
    EXPECT_EQ(shortestText(1.0F), "1.0");
    EXPECT_EQ(shortestText(100000.0F), "100000.0");
}

TEST(NumberText, AFractionHasTheFewestDigits) {
    EXPECT_EQ(shortestText(0.1), "0.1");
    EXPECT_EQ(shortestText(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(shortestText(0.5F), "0.5");
    EXPECT_EQ(shortestText(0.1F), "0.1");
    EXPECT_EQ(shortestText(0.33333334F), "0.33333334");
    EXPECT_EQ(shortestText(0.0001), "0.0001");
    EXPECT_EQ(shortestText(0.0001F), "0.0001");
}

TEST(NumberText, VeryLargeAndVerySmallOnesHaveAnExponent) {
    EXPECT_EQ(shortestText(9007199254740992.0), "9007199254740992.0");
    EXPECT_EQ(shortestText(1e16), "1e+16");
    EXPECT_EQ(shortestText(0.00001), "1e-05");
    EXPECT_EQ(shortestText(std::numeric_limits<double>::denorm_min()), "5e-324");
    EXPECT_EQ(shortestText(16777216.0F), "16777216.0");
    EXPECT_EQ(shortestText(1e8F), "1e+08");
}

TEST(NumberText, WhatIsNoNumberHasAText) {
    EXPECT_EQ(shortestText(std::nan("")), "nan");
    EXPECT_EQ(shortestText(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(shortestText(-std::numeric_limits<float>::infinity()), "-inf");
    EXPECT_EQ(twoDecimals(std::numeric_limits<double>::infinity()), "inf");
}

TEST(NumberText, TwoDecimalsAreRoundedToTheNearest) {
    EXPECT_EQ(twoDecimals(75.5), "75.50");
    EXPECT_EQ(twoDecimals(3.07), "3.07");
    EXPECT_EQ(twoDecimals(0), "0.00");
    EXPECT_EQ(twoDecimals(0.005), "0.01"); // a little more than that
    EXPECT_EQ(twoDecimals(0.125), "0.12"); // exactly half: to the even one
    EXPECT_EQ(twoDecimals(2.675), "2.67"); // a little less
    EXPECT_EQ(twoDecimals(-3), "-3.00");
    EXPECT_EQ(twoDecimals(123456.789), "123456.79");
    EXPECT_EQ(twoDecimals(std::numeric_limits<double>::max()).size(), 312U);
}

struct Comma final : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(NumberText, IsTheSameInEveryLocale) {
    const auto former = std::locale::global(std::locale(std::locale::classic(), new Comma));
    for (const auto* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8"})
        if (std::setlocale(LC_ALL, name)) break;
    EXPECT_EQ(twoDecimals(1234567.5), "1234567.50");
    EXPECT_EQ(shortestText(1234567.5), "1234567.5");
    std::locale::global(former);
}

} // namespace
} // namespace tallyfoot
