#include "Tallyfoot/Events/FileEventFormatter.h"
#include "Tallyfoot/Events/GeneratedAttributes.h"
#include "Tallyfoot/Events/StoredRecord.h"

#include <gtest/gtest.h>

#include <thread>

namespace tallyfoot {
namespace {

using namespace std::chrono_literals;

class StoppedClock final : public Clock {
public:
    Date now() const noexcept override { return date; }

    Date date{};
};

class CountingRandom final : public Random {
public:
    std::uint32_t number() override { return ++count; }

    std::string uuidString() override {
        std::string text = std::to_string(++count);
        return "00000000-0000-4000-8000-" + std::string(12 - text.size(), '0') + text;
    }

    std::uint32_t count = 0;
};

class GeneratedAttributesTest : public ::testing::Test {
public:
    Attributes generated(Date date) {
        clock.date = date;
        Attributes attributes;
        GeneratedAttributes(clock, random).addTo(attributes, "Home", std::nullopt);
        return attributes;
    }

    std::string time(Date date) { return *generated(date).find(LogAttribute::evtLclTimestamp); }

    StoppedClock clock;
    CountingRandom random;
};

TEST_F(GeneratedAttributesTest, AreTimeIdentifierScreenTitleAndPageParent) {
    EXPECT_EQ(generated(Date(1'700'000'000s)),
              (Attributes{{LogAttribute::evtLclTimestamp, "2023-11-14 22:13:20 +0000"},
                          {LogAttribute::evtId, "00000000-0000-4000-8000-000000000001"},
                          {LogAttribute::screenTitle, "Home"},
                          {LogAttribute::window, "iOS"}}));
}

TEST_F(GeneratedAttributesTest, AloneMakeAPrettyPrintedRecord) {
    const auto attributes = generated(Date(1'700'000'000s));
    auto record = FileEventFormatter().format({EventType::action, attributes}).value();
    makeStoredRecord(record, attributes);
    EXPECT_EQ(record, "{\n"
                      "  \"evtId\" : \"00000000-0000-4000-8000-000000000001\",\n"
                      "  \"evtLclTimestamp\" : \"2023-11-14 22:13:20 +0000\",\n"
                      "  \"pgName\" : \"Home\",\n"
                      "  \"pgPrnt\" : \"iOS\"\n"
                      "}jsonsplit");
}

TEST_F(GeneratedAttributesTest, APageParentThatIsSetTakesThePlaceOfIOS) {
    Attributes attributes;
    GeneratedAttributes(clock, random).addTo(attributes, "", "web");
    EXPECT_EQ(*attributes.find(LogAttribute::window), "web");
    EXPECT_EQ(*attributes.find(LogAttribute::screenTitle), "") << "no screen is shown";
}

TEST_F(GeneratedAttributesTest, AnEmptyPageParentIsOne) {
    Attributes attributes;
    GeneratedAttributes(clock, random).addTo(attributes, "", "");
    EXPECT_EQ(*attributes.find(LogAttribute::window), "");
}

TEST_F(GeneratedAttributesTest, WhatTheCallerSetStays) {
    const Attributes before{{LogAttribute::evtLclTimestamp, "yesterday"},
                            {LogAttribute::evtId, ""},
                            {LogAttribute::screenTitle, "Mine"},
                            {LogAttribute::window, "web"},
                            {LogAttribute::evtLabel, "Buy"}};
    Attributes attributes = before;
    GeneratedAttributes(clock, random).addTo(attributes, "Home", "other");
    EXPECT_EQ(attributes, before);
    EXPECT_EQ(random.count, 0U) << "no identifier is drawn for nothing";
}

TEST_F(GeneratedAttributesTest, EveryEventGetsAnIdentifierOfItsOwn) {
    EXPECT_NE(*generated(Date(0s)).find(LogAttribute::evtId), *generated(Date(0s)).find(LogAttribute::evtId));
}

TEST_F(GeneratedAttributesTest, TheTimeFollowsTheClock) {
    EXPECT_EQ(time(Date(0s)), "1970-01-01 00:00:00 +0000");
    EXPECT_EQ(time(Date(1s)), "1970-01-01 00:00:01 +0000");
    EXPECT_EQ(time(Date(0s)), "1970-01-01 00:00:00 +0000");
    EXPECT_EQ(time(Date(951'782'400s)), "2000-02-29 00:00:00 +0000");
    EXPECT_EQ(time(Date(4'107'542'399s)), "2100-02-28 23:59:59 +0000");
    EXPECT_EQ(time(Date(4'107'542'400s)), "2100-03-01 00:00:00 +0000");
}

TEST_F(GeneratedAttributesTest, FractionsOfASecondAreCutOff) {
    EXPECT_EQ(time(Date(1s + 999'999'999ns)), "1970-01-01 00:00:01 +0000");
}

TEST_F(GeneratedAttributesTest, DatesBefore1970AreRight) {
    EXPECT_EQ(time(Date(-1s)), "1969-12-31 23:59:59 +0000");
    EXPECT_EQ(time(Date(-1ns)), "1969-12-31 23:59:59 +0000");
    EXPECT_EQ(time(Date(-2'208'988'800s)), "1900-01-01 00:00:00 +0000");
}

TEST_F(GeneratedAttributesTest, TheFarEndsOfTheClockAreRight) {
    EXPECT_EQ(time(Date::min()), "1677-09-21 00:12:43 +0000");
    EXPECT_EQ(time(Date::max()), "2262-04-11 23:47:16 +0000");
}

TEST_F(GeneratedAttributesTest, AnEventOfAnEndingThreadGetsItsTime) {
    // The destructor of a value that belongs to a thread runs when the thread is all but gone.
    struct LastWord {
        ~LastWord() {
            if (test != nullptr) *text = test->time(Date(60s));
        }

        GeneratedAttributesTest* test = nullptr;
        std::string* text = nullptr;
    };

    std::string text;
    std::thread([&] {
        thread_local LastWord lastWord;
        lastWord.test = this;
        lastWord.text = &text;
        EXPECT_EQ(time(Date(0s)), "1970-01-01 00:00:00 +0000");
    }).join();
    EXPECT_EQ(text, "1970-01-01 00:01:00 +0000");
}

} // namespace
} // namespace tallyfoot
