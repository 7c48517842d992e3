#include "Collector/FaultQueue.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tallyfoot::collector {
namespace {

Fault parsed(const char* json) {
    const auto faults = Fault::parse(nlohmann::json::parse(json));
    EXPECT_TRUE(faults) << json;
    return faults ? faults.value().at(0) : Fault();
}

Fault parsedOption(const char* option) {
    const auto faults = Fault::parseOption(option);
    EXPECT_TRUE(faults) << option;
    return faults ? faults.value().at(0) : Fault();
}

TEST(Fault, RefusesByNameByCountOrAll) {
    const auto named = parsed(R"({"kind":"refuse","files":["b.log"]})");
    EXPECT_FALSE(named.refuses("a.log", 0));
    EXPECT_TRUE(named.refuses("b.log", 1));
    const auto every = parsed(R"({"kind":"refuse","files":{"every":2}})");
    EXPECT_FALSE(every.refuses("a.log", 0));
    EXPECT_TRUE(every.refuses("b.log", 1));
    EXPECT_TRUE(parsed(R"({"kind":"refuse","files":"all"})").refuses("a.log", 0));
    EXPECT_TRUE(parsed(R"({"kind":"refuse"})").refuses("a.log", 0));
    EXPECT_FALSE(parsed(R"({"kind":"refuse","files":[]})").refuses("a.log", 0));
    EXPECT_FALSE(parsed(R"({"kind":"accept"})").refuses("a.log", 0));
}

TEST(Fault, AStatusCodeIsATextOrANumber) {
    EXPECT_EQ(parsed(R"({"kind":"status","statusCode":"10000003"})").statusCode, "10000003");
    EXPECT_EQ(parsed(R"({"kind":"status","statusCode":10000003})").statusCode, "10000003");
}

TEST(Fault, ComesSeveralTimes) {
    EXPECT_EQ(Fault::parse(nlohmann::json::parse(R"({"kind":"garbage","times":3})")).value().size(), 3U);
}

TEST(Fault, RefusesWhatItDoesNotUnderstand) {
    for (const auto* json : {"{}", "[]", R"({"kind":"status"})", R"({"kind":"http","status":99})", R"({"kind":7})",
                             R"({"kind":"refuse","files":"some"})", R"({"kind":"reset","afterBytes":"x"})",
                             R"({"kind":"refuse","files":{"every":0}})", R"({"kind":"refuse","files":{"every":-1}})",
                             R"({"kind":"delay","milliseconds":-1})", R"({"kind":"delay","milliseconds":1.5})",
                             R"({"kind":"delay","milliseconds":true})", R"({"kind":"delay","milliseconds":4294967296})",
                             R"({"kind":"http","status":4294967496})", R"({"kind":"reset","afterBytes":-1})",
                             R"({"kind":"accept","times":-1})", R"({"kind":"accept","times":100001})"}) {
        EXPECT_FALSE(Fault::parse(nlohmann::json::parse(json))) << json;
    }
}

TEST(Fault, ReadsOptions) {
    EXPECT_EQ(parsedOption("status:10000003").statusCode, "10000003");
    EXPECT_EQ(parsedOption("http:503").httpStatus, 503);
    EXPECT_EQ(parsedOption("delay:200").wait, std::chrono::milliseconds(200));
    EXPECT_EQ(parsedOption("reset:1000").afterBytes, 1000U);
    EXPECT_EQ(parsedOption("refuse:2").refusesEvery, 2U);
    EXPECT_EQ(parsedOption("dropReply").kind, Fault::Kind::dropReply);
    EXPECT_EQ(parsedOption("answer:17").body, "17");
    EXPECT_EQ(parsedOption(R"({"kind":"garbage","milliseconds":5})").wait, std::chrono::milliseconds(5));
    for (const auto* option : {"", "fire", "garbage:1", "delay:soon", "refuse:0", "{"})
        EXPECT_FALSE(Fault::parseOption(option)) << option;
}

TEST(Fault, OnlyThreeStatusCodesRejectTheUser) {
    EXPECT_TRUE(isAuthenticationRejection("10000002"));
    EXPECT_TRUE(isAuthenticationRejection("10000003"));
    EXPECT_TRUE(isAuthenticationRejection("10000008"));
    EXPECT_FALSE(isAuthenticationRejection("10000004"));
    EXPECT_FALSE(isAuthenticationRejection("200"));
}

TEST(FaultQueue, GivesWhatWasQueuedInOrderAndThenAccepts) {
    FaultQueue queue;
    queue.append({parsedOption("garbage"), parsedOption("dropReply")});
    EXPECT_EQ(queue.size(), 2U);
    EXPECT_EQ(queue.next().kind, Fault::Kind::garbage);
    EXPECT_EQ(queue.next().kind, Fault::Kind::dropReply);
    EXPECT_EQ(queue.next().kind, Fault::Kind::accept);
}

TEST(FaultQueue, QueuedFaultsComeBeforeChance) {
    FaultQueue queue;
    queue.chooseAtRandom(1);
    queue.append({parsedOption("delay:1")});
    EXPECT_EQ(queue.next().kind, Fault::Kind::delay);
}

TEST(FaultQueue, ChanceIsTheSameForTheSameSeedAndBringsEveryKindItKnows) {
    FaultQueue first;
    FaultQueue second;
    first.chooseAtRandom(42);
    second.chooseAtRandom(42);
    std::map<Fault::Kind, int> kinds;
    for (int i = 0; i < 500; ++i) {
        const auto fault = first.next();
        EXPECT_EQ(fault.kind, second.next().kind);
        ++kinds[fault.kind];
    }
    EXPECT_EQ(kinds.size(), 7U);
    EXPECT_GT(kinds[Fault::Kind::accept], 200);
}

TEST(FaultQueue, ClearEndsChanceToo) {
    FaultQueue queue;
    queue.chooseAtRandom(42);
    queue.append({parsedOption("garbage")});
    queue.clear();
    for (int i = 0; i < 100; ++i) EXPECT_EQ(queue.next().kind, Fault::Kind::accept);
}

} // namespace
} // namespace tallyfoot::collector
