#include "Recording/RecorderHost.h"
#include "Recording/ShakyDisk.h"
#include "Support/RequestBody.h"

#include "Tallyfoot/Storage/ArchiveClaim.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

// What a recorder sends, and what it makes of the answer.
namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

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
    EXPECT_NE(bodyOf(request).find("name=\"userIpAddress\""), std::string::npos);
    EXPECT_NE(field(request, "userAgent").find("/iOS/"), std::string::npos);
    EXPECT_THAT(request.headers, ::testing::Contains(std::pair<std::string, std::string>("cookie", "token-1")));
    EXPECT_THAT(sentEvents(request), ElementsAre("1"));
}

TEST(EventRecorder, TheConfigurationNamesTheServerAndWithoutOneTheEnvironmentDoes) {
    RecorderHost host;
    host.settings.environment()->setUploadPath("http://127.0.0.1:1/environment");
    for (const auto& path : {std::optional<std::string>("http://127.0.0.1:1/upload"), std::optional<std::string>()}) {
        host.configuration->setUploadPath(path);
        host.start();
        host.log();
        host.trigger();
        EXPECT_EQ(host.server->requests().back().url, path.value_or("http://127.0.0.1:1/environment"));
        host.stop();
    }
}

TEST(EventRecorder, TheClosureIsAskedBeforeTheServerIsChosen) {
    RecorderHost host;
    host.start([&] {
        host.configuration->setUploadPath("http://127.0.0.1:1/of-this-user");
        return std::make_shared<Authentication>("user-1", "token-1");
    });
    host.log();
    host.trigger();
    EXPECT_EQ(host.server->requests().at(0).url, "http://127.0.0.1:1/of-this-user");
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

TEST(EventRecorder, WhatTheAnswerLeavesOutOfItsSuccessesIsSentAgain) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.server->answerWith("200", {}, {"another.log"}); // which does not say that the file arrived
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1"));
}

TEST(EventRecorder, AnAnswerThatConfirmsNothingHasTheArchiveSentAgain) {
    RecorderHost host;
    host.start();
    host.log();
    for (const std::string body : {"", "thanks", R"({"data":{}})", R"({"data":{"response":{"statusCode":[]}}})"}) {
        host.trigger();
        EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1")) << body;
        host.server->answer(body);
        EXPECT_THAT(host.files("Backup"), IsEmpty());
        EXPECT_THAT(host.files("Upload"), SizeIs(1));
    }
}

TEST(EventRecorder, AConfirmedArchiveThatCannotBeDeletedIsSentAgain) {
    RecorderHost host;
    const auto disk = std::make_shared<ShakyDisk>();
    host.services.fileManager = disk;
    host.start();
    host.log();
    host.trigger();
    disk->cannotChange = true;
    host.server->answerWith("200");
    disk->cannotChange = false;
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1"));
    host.server->answerWith("200");
    EXPECT_THAT(host.files("Backup"), IsEmpty());
}

TEST(EventRecorder, AnArchiveThatCannotBeRestoredIsSentAgainAsAWhole) {
    RecorderHost host;
    const auto disk = std::make_shared<ShakyDisk>();
    host.services.fileManager = disk;
    host.start();
    host.log();
    host.recorder->triggerUpload();
    const auto delivered = host.files("Upload");
    host.log();
    host.trigger();
    disk->cannotChange = true;
    host.server->answerWith("200", delivered, {"the other one"});
    disk->cannotChange = false;
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1", "2"));
}

TEST(EventRecorder, AnArchiveThatCannotBeSentAtAllIsRestoredForTheNextTrigger) {
    RecorderHost host;
    host.configuration->setUploadPath("no address");
    host.start();
    host.log();
    for (int trigger = 0; trigger < 2; ++trigger) {
        host.trigger();
        EXPECT_THAT(host.server->requests(), IsEmpty());
        EXPECT_THAT(host.files("Backup"), IsEmpty());
        EXPECT_THAT(host.files("Upload"), SizeIs(1));
    }
    host.configuration->setUploadPath("http://127.0.0.1:1/upload");
    host.start();
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().at(0)), ElementsAre("1"));
}

TEST(EventRecorder, AnUploadThatMemoryRunsOutForEndsNothingAndIsSentAfterTheNextStart) {
    RecorderHost host;
    const auto disk = std::make_shared<ShakyDisk>();
    host.services.fileManager = disk;
    host.start();
    host.log();
    disk->hasNoMemory = true;
    EXPECT_NO_THROW(host.trigger());
    disk->hasNoMemory = false;
    EXPECT_THAT(host.server->requests(), IsEmpty());
    host.stop();
    host.start();
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().at(0)), ElementsAre("1"));
}

TEST(EventRecorder, AnAnswerThatMemoryRunsOutForHasTheArchiveSentAgain) {
    RecorderHost host;
    const auto disk = std::make_shared<ShakyDisk>();
    host.services.fileManager = disk;
    host.start();
    host.log();
    host.trigger();
    disk->hasNoMemory = true;
    EXPECT_NO_THROW(host.server->answer(Error{"no connection"}));
    disk->hasNoMemory = false;
    host.trigger();
    ASSERT_THAT(host.server->requests(), SizeIs(2));
    EXPECT_THAT(sentEvents(host.server->requests()[1]), ElementsAre("1"));
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

TEST(EventRecorder, WhatWasOnItsWayAtAKillIsSentAgainAfterTheNextStart) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.stop();
    host.server = std::make_shared<ManualURLSession>();
    host.start();
    EXPECT_THAT(host.files("Backup"), IsEmpty());
    host.trigger();
    ASSERT_EQ(host.server->waiting(), 1U);
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1"));
}

TEST(EventRecorder, AnArchiveThatAnotherOneIsRestoringIsNotSent) {
    RecorderHost host;
    const auto disk = std::make_shared<ShakyDisk>();
    host.services.fileManager = disk;
    host.start();
    host.log();
    host.trigger();
    disk->cannotChange = true;
    host.server->answer(Error{"connection reset"});
    disk->cannotChange = false;
    const auto archive = host.folder("Shop", "Backup") / host.files("Backup").back(); // behind what is hidden
    {
        const ArchiveClaim claim(archive); // as a recorder before this one
        host.trigger();
        EXPECT_THAT(host.server->requests(), SizeIs(1));
    }
    host.trigger();
    ASSERT_THAT(host.server->requests(), SizeIs(2));
    EXPECT_THAT(sentEvents(host.server->requests()[1]), ElementsAre("1"));
}

TEST(EventRecorder, ARecorderThatFollowsAnotherSendsWhatThatOneHadUnderWay) {
    RecorderHost host;
    host.start();
    host.log();
    host.recorder->triggerUpload(); // the upload that waits keeps the recorder until it has run
    host.stop();
    host.start();
    host.log();
    host.settle();
    host.server->answerWith("200"); // to the former recorder, which is gone
    EXPECT_THAT(host.files("Backup"), SizeIs(1));
    host.trigger();
    ASSERT_EQ(host.server->waiting(), 2U);
    const auto requests = host.server->requests();
    EXPECT_THAT((std::vector{sentEvents(requests[requests.size() - 2]), sentEvents(requests[requests.size() - 1])}),
                UnorderedElementsAre(ElementsAre("1"), ElementsAre("2")));
    host.server->answerWith("200");
    host.server->answerWith("200");
    EXPECT_THAT(host.files("Backup"), IsEmpty());
}

TEST(EventRecorder, TheUploadSummaryIsPrintedWordForWord) {
    RecorderHost host({.showOutput = true});
    host.start();
    for (const bool isConfigured : {false, true}) {
        host.settings.uploadConfiguration.exchange(isConfigured ? host.configuration : nullptr);
        host.log();
        host.console->clear();
        host.trigger();
        const auto lines = host.console->lines();
        const auto first = std::find(lines.begin(), lines.end(), "\"Uploading logs for applicaton Shop\"");
        ASSERT_GE(lines.end() - first, 5);
        EXPECT_EQ(first[1],
                  "\"************************************Request Info Begin************************************\"");
        EXPECT_EQ(first[2], isConfigured ? "\"url is: http://127.0.0.1:1/upload\"" : "\"url is: NA\"");
        EXPECT_THAT(first[3], ::testing::StartsWith(R"("Body parameters: [\"appName\": \"Shop\", \")"));
        EXPECT_EQ(first[4],
                  "\"************************************Request Info End *************************************\"");
        host.server->answerWith("200");
        EXPECT_TRUE(host.console->contains("\"Reponse Code is: 200\""));
    }
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

} // namespace
} // namespace tallyfoot::testing
