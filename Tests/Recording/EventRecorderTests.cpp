#include "Recording/RecorderHost.h"

#include "Tallyfoot/Platform/UserDefaults.h"
#include "Tallyfoot/Recording/StoreKeys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST(EventRecorder, ARecordIsOnDiskAndCountedWhenTheCallReturns) {
    RecorderHost host;
    host.start();
    host.log(2);
    ASSERT_THAT(host.files("Events"), SizeIs(1));
    EXPECT_THAT(events(readFile(host.folder("Shop", "Events") / host.files("Events")[0])), ElementsAre("1", "2"));
    EXPECT_EQ(host.eventCount(), 2);
}

TEST(EventRecorder, AsManyEventsAsTheThresholdDoNotTriggerAndOneMoreDoes) {
    RecorderHost host({.eventsCount = 10});
    host.start();
    host.log(10);
    host.settle();
    EXPECT_EQ(host.server->waiting(), 0U);
    host.log();
    EXPECT_EQ(host.eventCount(), 0);
    host.settle();
    EXPECT_EQ(host.server->waiting(), 1U);
}

TEST(EventRecorder, TheEventAfterATriggerDoesNotTriggerAgain) {
    RecorderHost host({.eventsCount = 10});
    host.start();
    host.log(12);
    host.settle();
    EXPECT_EQ(host.server->requests().size(), 1U);
    EXPECT_EQ(host.eventCount(), 1);
}

TEST(EventRecorder, ATriggerClosesTheFileResetsTheCountAndNotesTheTime) {
    RecorderHost host;
    host.start();
    host.log(3);
    host.recorder->triggerUpload();
    EXPECT_THAT(host.files("Events"), IsEmpty());
    EXPECT_THAT(host.files("Upload"), SizeIs(1));
    EXPECT_EQ(host.eventCount(), 0);
    EXPECT_DOUBLE_EQ(host.services.userDefaults->real(storekeys::eventLastUpload),
                     timeIntervalSince1970(host.clock->now()));
}

TEST(EventRecorder, TheEndOfThePeriodTriggersWhenEventsWereCounted) {
    RecorderHost host({.seconds = 60});
    host.start();
    host.log();
    host.dispatch->advance(59s);
    host.settle();
    EXPECT_EQ(host.server->waiting(), 0U);
    host.dispatch->advance(2s);
    host.settle();
    EXPECT_EQ(host.server->waiting(), 1U);
}

TEST(EventRecorder, ATriggerByCountBeginsAFullNewPeriod) {
    RecorderHost host({.seconds = 60, .eventsCount = 10});
    host.start();
    host.dispatch->advance(50s);
    host.log(11);
    host.settle();
    host.log();
    host.dispatch->advance(59s);
    host.settle();
    EXPECT_EQ(host.server->requests().size(), 1U);
    host.dispatch->advance(2s);
    host.settle();
    EXPECT_EQ(host.server->requests().size(), 2U);
}

TEST(EventRecorder, APeriodThatEndedWhileTheProcessWasAwayTriggersAtTheStart) {
    RecorderHost host({.seconds = 60});
    host.start();
    host.log();
    host.trigger();
    host.server->answerWith("200");
    host.log();
    host.stop();
    host.clock->advance(61s);
    host.start();
    host.settle();
    EXPECT_EQ(host.server->requests().size(), 2U);
}

TEST(EventRecorder, UnderAStartedPeriodARestartWaitsForTheRestOnly) {
    RecorderHost host({.seconds = 60});
    host.start();
    host.log();
    host.trigger();
    host.server->answerWith("200");
    host.log();
    host.stop();
    host.clock->advance(40s);
    host.start();
    host.dispatch->advance(19s);
    host.settle();
    EXPECT_EQ(host.server->requests().size(), 1U);
    host.dispatch->advance(2s);
    host.settle();
    EXPECT_EQ(host.server->requests().size(), 2U);
}

TEST(EventRecorder, AnUploadWithNothingToSendIsSilent) {
    RecorderHost host({.showOutput = true});
    host.start();
    host.recorder->triggerUpload();
    host.console->clear();
    host.settle();
    EXPECT_EQ(host.server->waiting(), 0U);
    EXPECT_EQ(host.console->text(), "");
}

TEST(EventRecorder, TheRequestCarriesTheApplicationTheUserAndTheSeparator) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    ASSERT_EQ(host.server->waiting(), 1U);
    const auto request = host.server->requests().front();
    EXPECT_EQ(field(request, "appName"), "Shop");
    EXPECT_EQ(field(request, "appid"), "Shop-id");
    EXPECT_EQ(field(request, "bizarea"), "Retail");
    EXPECT_EQ(field(request, "bizareaid"), "R-7");
    EXPECT_EQ(field(request, "userId"), "user-1");
    EXPECT_EQ(field(request, "authtoken"), "token-1");
    EXPECT_EQ(field(request, "delimeter"), "jsonsplit");
    EXPECT_EQ(field(request, "deviceScrnDim"), "0-0");
    EXPECT_NE(request.body.find("name=\"userIpAddress\""), std::string::npos);
    EXPECT_NE(field(request, "userAgent").find("/iOS/"), std::string::npos);
    EXPECT_THAT(request.headers, ::testing::Contains(std::pair<std::string, std::string>("cookie", "token-1")));
    EXPECT_THAT(sentEvents(request), ElementsAre("1"));
}

TEST(EventRecorder, FullSuccessDeletesTheArchive) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    EXPECT_THAT(host.files("Backup"), SizeIs(1));
    host.server->answerWith("200");
    EXPECT_THAT(host.files("Backup"), IsEmpty());
    EXPECT_THAT(host.files("Upload"), IsEmpty());
}

TEST(EventRecorder, ATransportErrorRestoresEverythingForTheNextTrigger) {
    RecorderHost host;
    host.start();
    host.log(2);
    host.trigger();
    host.server->answer(Error{"connection reset"});
    EXPECT_THAT(host.files("Backup"), IsEmpty());
    EXPECT_THAT(host.files("Upload"), SizeIs(1));
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1", "2"));
}

TEST(EventRecorder, PartialSuccessRestoresOnlyWhatDidNotArrive) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.server->answer(Error{"no answer"}); // the first file waits in Upload again
    const auto first = host.files("Upload");
    host.log();
    host.recorder->triggerUpload();
    const auto both = host.files("Upload");
    ASSERT_THAT(both, SizeIs(2));
    host.settle();
    const auto second = both[0] == first[0] ? both[1] : both[0];
    host.server->answerWith("200", {second}, {first[0]});
    EXPECT_THAT(host.files("Upload"), ElementsAre(first[0]));
    EXPECT_THAT(host.files("Backup"), IsEmpty());
}

TEST(EventRecorder, AFailureWithoutASuccessListRestoresEverything) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.server->answer(
        std::string(R"({"data":{"response":{"statusCode":1,"statusCodeInfo":"","filename":"","failure":["x"]}}})"));
    EXPECT_THAT(host.files("Upload"), SizeIs(1));
}

class AuthenticationRejection : public ::testing::TestWithParam<std::string> {};

TEST_P(AuthenticationRejection, RestoresEverythingAndAsksForFreshCredentials) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.token = "token-2";
    const auto sent = host.files("Backup");
    host.server->answerWith(GetParam(), {"anything.log"}, {});
    EXPECT_EQ(host.authenticationsAsked, 2);
    EXPECT_THAT(host.files("Upload"), SizeIs(1));
    host.trigger();
    EXPECT_EQ(field(host.server->requests().back(), "authtoken"), "token-2");
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1"));
}

INSTANTIATE_TEST_SUITE_P(Codes, AuthenticationRejection, ::testing::Values("10000002", "10000003", "10000008"));

TEST(EventRecorder, AChangedUserLosesAllLocalLogsOfTheFolder) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.log(); // in Events
    host.userId = "user-2";
    host.server->answerWith("10000003");
    EXPECT_THAT(host.files("Events"), IsEmpty());
    EXPECT_THAT(host.files("Upload"), IsEmpty());
    EXPECT_THAT(host.files("Backup"), IsEmpty());
    EXPECT_EQ(*host.services.userDefaults->object(storekeys::user)->as<std::string>(), "user-2");
    host.log();
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("3"));
    EXPECT_EQ(field(host.server->requests().back(), "userId"), "user-2");
}

TEST(EventRecorder, AnArchiveOnItsWayIsNotSentTwice) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.trigger();
    EXPECT_EQ(host.server->requests().size(), 1U);
    host.log();
    host.trigger();
    EXPECT_EQ(host.server->requests().size(), 2U);
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("2"));
}

TEST(EventRecorder, SwitchingClosesTheOldFileAndSendsItUnderItsOwnName) {
    RecorderHost host;
    host.start();
    host.log();
    host.switchTo("Bank");
    EXPECT_EQ(host.eventCount(), 0);
    host.log();
    host.settle();
    ASSERT_EQ(host.server->waiting(), 1U);
    EXPECT_EQ(field(host.server->requests().back(), "appName"), "Shop");
    EXPECT_EQ(field(host.server->requests().back(), "appid"), "Shop-id");
    EXPECT_THAT(host.files("Bank", "Events"), SizeIs(1));
    EXPECT_THAT(host.knownApplications(), ElementsAre("Shop", "Bank"));
}

TEST(EventRecorder, AnOldApplicationWithNothingToSendLeavesTheListAndTheDisk) {
    RecorderHost host({.showOutput = true});
    host.start();
    host.log();
    host.switchTo("Bank");
    host.settle();
    host.server->answerWith("200");
    host.switchTo("Cafe"); // Bank never logged, Shop is sent
    host.settle();
    EXPECT_THAT(host.knownApplications(), ElementsAre("Cafe"));
    EXPECT_FALSE(std::filesystem::exists(host.folder("Shop", "")));
    EXPECT_TRUE(host.console->contains("\"Empty folder app name Shop\""));
    EXPECT_TRUE(host.console->contains("\"calling upload for old app Shop\""));
}

TEST(EventRecorder, ASwitchPrintsEveryKnownNamePlainly) {
    RecorderHost host({.showOutput = true});
    host.start();
    host.console->clear();
    host.switchTo("Bank");
    EXPECT_TRUE(host.console->contains("Shop"));
    EXPECT_TRUE(host.console->contains("Bank"));
}

TEST(EventRecorder, EventsThatAKilledProcessLeftUnderAnotherApplicationAreSentNotDeleted) {
    RecorderHost host;
    host.start();
    host.log(); // stays in Shop's Events: no trigger, no switch
    host.stop();
    host.appName = "Bank";
    host.start();
    host.switchTo("Cafe");
    host.settle();
    ASSERT_EQ(host.server->waiting(), 1U);
    EXPECT_EQ(field(host.server->requests().back(), "appName"), "Shop");
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1"));
}

TEST(EventRecorder, WhatWasOnItsWayAtAKillIsSentAgainAfterTheNextStart) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.stop();
    host.server = std::make_shared<FakeURLSession>();
    host.start();
    EXPECT_THAT(host.files("Backup"), IsEmpty());
    host.trigger();
    ASSERT_EQ(host.server->waiting(), 1U);
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1"));
}

TEST(EventRecorder, TheUploadSummaryIsPrintedWordForWord) {
    RecorderHost host({.showOutput = true});
    host.start();
    host.log();
    host.console->clear();
    host.settings.uploadConfiguration.exchange(nullptr);
    host.trigger();
    EXPECT_TRUE(host.console->contains("\"Uploading logs for applicaton Shop\""));
    EXPECT_TRUE(host.console->contains(
        "\"************************************Request Info Begin************************************\""));
    EXPECT_TRUE(host.console->contains("\"url is: NA\""));
    EXPECT_TRUE(host.console->contains(
        "\"************************************Request Info End *************************************\""));
    EXPECT_NE(host.console->text().find("\"Body parameters: [\\\"appName\\\": \\\"Shop\\\""), std::string::npos);
    host.server->answerWith("200");
    EXPECT_TRUE(host.console->contains("\"Reponse Code is: 200\""));
}

TEST(EventRecorder, AReleasedRecorderIgnoresAnswersAndTimers) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.stop();
    host.server->answerWith("200");
    host.dispatch->advance(1h);
    EXPECT_THAT(host.files("Backup"), SizeIs(1)); // nobody was there to delete it
}

TEST(EventRecorder, SwitchingBackWhileTheOldArchiveIsOnItsWayDoesNotSendItTwice) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.switchTo("Bank");
    host.settle();
    host.switchTo("Shop");
    host.settle();
    host.trigger();
    EXPECT_EQ(host.server->requests().size(), 1U);
    host.server->answerWith("200");
    EXPECT_THAT(host.files("Shop", "Backup"), IsEmpty());
}

using EventRecorderDeathTest = ::testing::Test;

TEST(EventRecorderDeathTest, AClosureThatReturnsNothingIsFatal) {
    RecorderHost host;
    EXPECT_DEATH(EventRecorder::make(host.services, host.settings, host.configuration, application("Shop"),
                                     [] { return std::shared_ptr<Authentication>(); }),
                 "authentication closure returned nothing");
}

TEST(EventRecorderDeathTest, AMissingClosureIsFatal) {
    RecorderHost host;
    EXPECT_DEATH(EventRecorder::make(host.services, host.settings, host.configuration, application("Shop"), nullptr),
                 "no authentication closure");
}

} // namespace
} // namespace tallyfoot::testing
