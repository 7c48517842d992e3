#include "Tallyfoot/Events/DateFormatter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>
#include <vector>

namespace tallyfoot {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view fileNames = "dd-MM-yyyy'T'HH-mm-ss-SSS";

class DateFormatterTest : public ::testing::Test {
protected:
    // ICU asks for the zone and the locale once in a process.
    static void SetUpTestSuite() {
        ::setenv("TZ", "Asia/Kolkata", 1); // half an hour off, and always the same
        ::setenv("LC_ALL", "C", 1);
    }
};

constexpr Date moment{1'709'820'309'123ms}; // 2024-03-07 14:05:09.123 UTC

TEST_F(DateFormatterTest, FormatsInTheDevicesTimeZone) {
    EXPECT_EQ(DateFormatter(fileNames).string(moment), "07-03-2024T19-35-09-123");
}

TEST_F(DateFormatterTest, MillisecondsAreRoundedToTheNearest) {
    const DateFormatter formatter("HH:mm:ss.SSS");
    EXPECT_EQ(formatter.string(moment + 499us + 999ns), "19:35:09.123");
    EXPECT_EQ(formatter.string(moment + 500us), "19:35:09.124");
    EXPECT_EQ(formatter.string(Date(1'709'820'309'999ms) + 700us), "19:35:10.000") << "and carry over";
}

TEST_F(DateFormatterTest, DatesBefore1970AreRoundedInTheSameDirection) {
    const DateFormatter formatter("yyyy-MM-dd HH:mm:ss.SSS");
    EXPECT_EQ(formatter.string(Date(-1ns)), "1970-01-01 05:30:00.000");
    EXPECT_EQ(formatter.string(Date(-501us)), "1970-01-01 05:29:59.999");
    EXPECT_EQ(formatter.string(Date(-500us)), "1970-01-01 05:30:00.000");
}

TEST_F(DateFormatterTest, WhatWasFormattedParsesToTheMillisecond) {
    const DateFormatter formatter(fileNames);
    EXPECT_EQ(formatter.date(formatter.string(moment)), moment);
    EXPECT_EQ(formatter.date("07-03-2024T19-35-09-123"), moment);
}

TEST_F(DateFormatterTest, TheWholeTextMustBeADate) {
    const DateFormatter formatter("yyyy-MM-dd");
    EXPECT_TRUE(formatter.date("2024-03-07"));
    for (const auto* text :
         {"2024-03-07 ", "2024-03-07x", "2024-03-07T10", "x2024-03-07", "2024-03", "2024-03-", "", " ", "-"})
        EXPECT_FALSE(formatter.date(text)) << text;
    EXPECT_FALSE(formatter.date(std::string_view("2024-03-07\0", 11)));
}

TEST_F(DateFormatterTest, AVeryLongTextIsNoDate) {
    EXPECT_FALSE(DateFormatter("yyyy").date(std::string(10'000'000, '0') + "2024"));
}

// Of so many digits ICU makes a division by zero.
TEST_F(DateFormatterTest, AFractionOfVeryManyDigitsIsNoDate) {
    const DateFormatter formatter("dd-MM-yyyy'T'HH-mm-ss-SSS");
    for (std::size_t digits = 10; digits < 100; ++digits) {
        EXPECT_FALSE(formatter.date("07-03-2024T14-05-09-" + std::string(digits, '1')));
        std::string arabic;
        for (std::size_t digit = 0; digit < digits; ++digit) arabic += "\u0661";
        EXPECT_FALSE(formatter.date("07-03-2024T14-05-09-" + arabic));
    }
    EXPECT_EQ(formatter.date("07-03-2024T14-05-09-123000000"), formatter.date("07-03-2024T14-05-09-123"));
    EXPECT_TRUE(formatter.date("07-03-2024T14-05-09-123"));
}

TEST_F(DateFormatterTest, APatternMayHaveNothingBetweenItsFields) {
    const auto expected = DateFormatter("dd-MM-yyyy'T'HH-mm-ss-SSS").date("07-03-2024T14-05-09-123");
    EXPECT_TRUE(expected);
    EXPECT_EQ(DateFormatter("yyyyMMddHHmmssSSS").date("20240307140509123"), expected);
    EXPECT_TRUE(DateFormatter("yyyyMMddHHmmss").date("20240307140509"));
    EXPECT_FALSE(DateFormatter("yyyyMMddHHmmssSSS").date("20240307140509" + std::string(50, '1')));
}

TEST_F(DateFormatterTest, ADayThatIsNotInTheCalendarIsNoDate) {
    const DateFormatter formatter("yyyy-MM-dd HH:mm");
    EXPECT_TRUE(formatter.date("2024-02-29 23:59"));
    for (const auto* text : {"2023-02-29 00:00", "2024-13-01 00:00", "2024-00-01 00:00", "2024-04-31 00:00",
                             "2024-04-00 00:00", "2024-04-01 24:00", "2024-04-01 12:60"})
        EXPECT_FALSE(formatter.date(text)) << text;
}

TEST_F(DateFormatterTest, ALogFilesNameIsNotTakenForAnotherPattern) {
    const DateFormatter formatter(fileNames);
    for (const auto* text : {"07-03-2024T19-35-09-123.log", "07-03-2024 19-35-09-123", "07/03/2024T19-35-09-123",
                             "Environment", ".hidden"})
        EXPECT_FALSE(formatter.date(text)) << text;
}

TEST_F(DateFormatterTest, IllFormedTextIsNoDate) { EXPECT_FALSE(DateFormatter("yyyy").date("20\xFF")); }

TEST_F(DateFormatterTest, ABadPatternYieldsNothing) {
    for (const auto* pattern : {"n", "yyyy n", "'", "\xFF\xFF n"}) {
        EXPECT_EQ(DateFormatter(pattern).date("2024"), std::nullopt) << pattern;
        DateFormatter(pattern).string(moment); // does no harm, whatever it makes of it
    }
    EXPECT_EQ(DateFormatter("yyyy n").string(moment), "");
}

TEST_F(DateFormatterTest, AnEmptyPatternFormatsToNothingAndParsesNothing) {
    EXPECT_EQ(DateFormatter("").date("2024"), std::nullopt);
    EXPECT_EQ(DateFormatter("").date(""), std::nullopt);
}

TEST_F(DateFormatterTest, ADateThatTheClockCannotHoldIsNone) {
    const DateFormatter formatter("yyyy-MM-dd");
    EXPECT_FALSE(formatter.date("9999-01-01"));
    EXPECT_FALSE(formatter.date("0001-01-01"));
    EXPECT_FALSE(formatter.date("99999999999999-01-01"));
    EXPECT_TRUE(formatter.date("2262-01-01"));
    EXPECT_TRUE(formatter.date("1678-01-01"));
}

TEST_F(DateFormatterTest, TheFarEndsOfTheClockAreFormatted) {
    const DateFormatter formatter("yyyy");
    EXPECT_EQ(formatter.string(Date::max()), "2262");
    EXPECT_EQ(formatter.string(Date::min()), "1677");
}

TEST_F(DateFormatterTest, ServesManyThreadsAtOnce) {
    const DateFormatter formatter(fileNames);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&, thread] {
            for (int round = 0; round < 500; ++round) {
                const Date date = moment + std::chrono::seconds(round * 7919 + thread);
                EXPECT_EQ(formatter.date(formatter.string(date)), date);
            }
        });
    for (auto& thread : threads) thread.join();
}

} // namespace
} // namespace tallyfoot
