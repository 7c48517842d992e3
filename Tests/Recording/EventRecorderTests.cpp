#include "Recording/RecorderHost.h"
#include "Storage/RelayFileManager.h"
#include "Support/MemoryUserDefaults.h"
#include "Support/RequestBody.h"

#include "Tallyfoot/Platform/KeyedArchiver.h"
#include "Tallyfoot/Platform/UserDefaults.h"
#include "Tallyfoot/Recording/StoreKeys.h"
#include "Tallyfoot/Storage/ArchiveClaim.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

// A disk that fails for as long as the test says so.
class ShakyDisk final : public RelayFileManager {
public:
    ShakyDisk() : RelayFileManager(*defaultPlatformServices().fileManager) {}

    Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const override {
        if (cannotList) return Error{"Too many open files"};
        return RelayFileManager::contentsOfDirectory(path);
    }
    Result<void> moveItem(const std::string& source, const std::string& destination) override {
        if (cannotChange) return Error{"Read-only file system"};
        return RelayFileManager::moveItem(source, destination);
    }
    Result<void> removeItem(const std::string& path) override {
        if (cannotChange) return Error{"Read-only file system"};
        return RelayFileManager::removeItem(path);
    }

    Result<std::string> contents(const std::string& path) const override {
        if (hasNoMemory) throw std::bad_alloc();
        return RelayFileManager::contents(path);
    }
    Result<void> writeAtomically(const std::string& path, std::string_view bytes) override {
        if (hasNoMemory) throw std::bad_alloc();
        return RelayFileManager::writeAtomically(path, bytes);
    }

    bool cannotList = false;
    bool cannotChange = false;
    bool hasNoMemory = false;
};

// Counts the writes that no synchronise has followed yet.
class CountingDefaults final : public UserDefaults {
public:
    std::int64_t integer(std::string_view key) const override { return store_.integer(key); }
    double real(std::string_view key) const override { return store_.real(key); }
    std::optional<PropertyList> object(std::string_view key) const override { return store_.object(key); }

    void setInteger(std::string_view key, std::int64_t value) override {
        store_.setInteger(key, value);
        count();
    }
    void setReal(std::string_view key, double value) override {
        store_.setReal(key, value);
        count();
    }
    void setObject(std::string_view key, const PropertyList& value) override {
        store_.setObject(key, value);
        count();
    }
    void remove(std::string_view key) override {
        store_.remove(key);
        count();
    }
    bool synchronize() override {
        waiting = 0;
        return store_.synchronize();
    }

    int waiting = 0;
    int mostWaiting = 0;

private:
    void count() { mostWaiting = std::max(mostWaiting, ++waiting); }

    MemoryUserDefaults store_;
};

// Tells the test whenever it is asked.
class AskedClock final : public Clock {
public:
    explicit AskedClock(std::shared_ptr<Clock> next) : next_(std::move(next)) {}
    Date now() const noexcept override {
        if (whenAsked) whenAsked();
        return next_->now();
    }
    std::function<void()> whenAsked;

private:
    std::shared_ptr<Clock> next_;
};

// Lets the test step in where another thread might: right before the recorder takes its turn, and
// right after it has given it back.
class SteppedDispatch final : public Dispatch {
public:
    explicit SteppedDispatch(std::shared_ptr<Dispatch> next) : next_(std::move(next)) {}

    std::shared_ptr<DispatchQueue> makeQueue(std::string label) override {
        auto queue = next_->makeQueue(label);
        if (label != "EventRecorder") return queue;
        return std::make_shared<Queue>(*this, std::move(queue));
    }
    std::unique_ptr<DispatchSourceTimer> makeTimerSource(std::shared_ptr<DispatchQueue> queue) override {
        return next_->makeTimerSource(std::move(queue));
    }

    std::function<void()> beforeTurn;
    std::function<void()> afterTurn;

private:
    class Queue final : public DispatchQueue {
    public:
        Queue(SteppedDispatch& dispatch, std::shared_ptr<DispatchQueue> next)
            : dispatch_(dispatch), next_(std::move(next)) {}
        void sync(FunctionRef<void()> block) override {
            if (isCurrent()) return next_->sync(block);
            dispatch_.step(dispatch_.beforeTurn);
            next_->sync(block);
            dispatch_.step(dispatch_.afterTurn);
        }
        void async(std::function<void()> block) override { next_->async(std::move(block)); }
        bool isCurrent() const noexcept override { return next_->isCurrent(); }
        const std::string& label() const noexcept override { return next_->label(); }

    private:
        SteppedDispatch& dispatch_;
        std::shared_ptr<DispatchQueue> next_;
    };

    void step(const std::function<void()>& into) { // not into itself
        if (!into || std::exchange(isInside_, true)) return;
        into();
        isInside_ = false;
    }

    std::shared_ptr<Dispatch> next_;
    bool isInside_ = false;
};

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

TEST(EventRecorder, AStoredCountOfTheLargestNumberIsOneMoreThanAnyThreshold) {
    RecorderHost host({.eventsCount = 10});
    host.start();
    host.services.userDefaults->setInteger("EventCount", std::numeric_limits<std::int64_t>::max());
    host.log();
    EXPECT_EQ(host.eventCount(), 0);
    host.settle();
    EXPECT_EQ(host.server->waiting(), 1U);
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

TEST(EventRecorder, AFullFileTriggersBeforeItsLastEventIsCounted) {
    RecorderHost host;
    host.settings.ignoreFileSizeThreshold = true; // every event fills the file
    host.start();
    host.log();
    EXPECT_THAT(host.files("Events"), IsEmpty());
    EXPECT_EQ(host.eventCount(), 1);
    host.settle();
    EXPECT_THAT(sentEvents(host.server->requests().at(0)), ElementsAre("1"));
}

TEST(EventRecorder, ATriggerInTheMiddleOfAnotherIsIgnoredAndALaterOneUploadsAgain) {
    RecorderHost host;
    const auto clock = std::make_shared<AskedClock>(host.clock);
    host.services.clock = clock;
    host.start();
    host.log();
    int asked = 0;
    clock->whenAsked = [&] {
        ++asked;
        host.recorder->triggerUpload();
    };
    host.recorder->triggerUpload();
    clock->whenAsked = nullptr;
    EXPECT_GT(asked, 0);
    EXPECT_EQ(host.dispatch->waitingBlocks(), 1U);
    host.recorder->triggerUpload();
    EXPECT_EQ(host.dispatch->waitingBlocks(), 2U);
}

TEST(EventRecorder, AnEventRightAfterATriggerMayTriggerAgain) {
    RecorderHost host;
    const auto dispatch = std::make_shared<SteppedDispatch>(host.dispatch);
    host.services.dispatch = dispatch;
    host.settings.ignoreFileSizeThreshold = true;
    host.start();
    dispatch->afterTurn = [&] { host.log(); };
    host.recorder->triggerUpload();
    dispatch->afterTurn = nullptr;
    EXPECT_THAT(host.files("Events"), IsEmpty()) << "the event waits for a trigger that it asked for itself";
    host.settle();
    EXPECT_THAT(sentEvents(host.server->requests().at(0)), ElementsAre("1"));
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

class AuthenticationRejection : public ::testing::TestWithParam<std::string> {};

TEST_P(AuthenticationRejection, RestoresEverythingAndAsksForFreshCredentials) {
    RecorderHost host;
    host.start();
    host.log();
    host.recorder->triggerUpload();
    const auto sent = host.files("Upload");
    host.settle();
    host.token = "token-2";
    host.server->answerWith(GetParam(), sent, {}); // which a rejection cannot have delivered
    EXPECT_EQ(host.authenticationsAsked, 2);
    EXPECT_THAT(host.files("Upload"), SizeIs(1));
    host.trigger();
    EXPECT_EQ(field(host.server->requests().back(), "authtoken"), "token-2");
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1"));
}

TEST_P(AuthenticationRejection, OfAUserWhoHasChangedDeletesEverything) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.userId = "user-2";
    host.server->answerWith(GetParam());
    EXPECT_THAT(host.files("Upload"), IsEmpty());
    EXPECT_THAT(host.files("Backup"), IsEmpty());
    host.log();
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("2"));
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

TEST(EventRecorder, AUserWhoseNameIsNoUTF8IsTheSameOneAfterARejection) {
    RecorderHost host;
    for (const std::string name : {"J\xFCrgen", "\xE2\x82", "\xED\xA0\x80"}) {
        host.userId = name;
        host.start();
        host.log();
        host.trigger();
        host.server->answerWith("10000003");
        EXPECT_THAT(host.files("Upload"), Not(IsEmpty())) << "taken for another user";
    }
}

TEST(EventRecorder, WithoutAStoredUserNobodyHasChanged) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.services.userDefaults->remove(storekeys::user);
    host.userId = "user-2";
    host.server->answerWith("10000003");
    EXPECT_THAT(host.files("Upload"), SizeIs(1));
    EXPECT_EQ(*host.services.userDefaults->object(storekeys::user)->as<std::string>(), "user-2");
}

TEST(EventRecorder, AClosureThatThrowsAtARejectionLeavesTheFormerCredentials) {
    RecorderHost host;
    bool throws = false;
    host.start([&] {
        if (throws) throw std::runtime_error("no network");
        return std::make_shared<Authentication>("user-1", "token-1");
    });
    host.log();
    host.trigger();
    throws = true;
    host.server->answerWith("10000003");
    EXPECT_EQ(host.recorder->authenticationInfo()->authenticationToken(), "token-1");
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1"));
    EXPECT_EQ(field(host.server->requests().back(), "authtoken"), "token-1");
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

TEST(EventRecorder, AChangedUserLeavesTheLogsOfOtherApplications) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.switchTo("Bank");
    host.settle();
    host.log();
    host.userId = "user-2";
    host.server->answerWith("10000003"); // to Shop's archive
    EXPECT_THAT(host.files("Shop", "Upload"), IsEmpty());
    ASSERT_THAT(host.files("Bank", "Events"), SizeIs(1));
    EXPECT_THAT(events(readFile(host.folder("Bank", "Events") / host.files("Bank", "Events")[0])), ElementsAre("2"));
}

TEST(EventRecorder, NoUploadTakesANewUsersTokenWhileTheFormerUsersLogsAreThere) {
    RecorderHost host;
    const auto dispatch = std::make_shared<SteppedDispatch>(host.dispatch);
    host.services.dispatch = dispatch;
    host.start();
    host.log();
    host.trigger();
    host.recorder->triggerUpload(); // its upload runs after the closure, before the logs are deleted
    dispatch->beforeTurn = [&] {
        if (host.authenticationsAsked == 2) host.settle();
    };
    host.userId = "user-2";
    host.token = "token-2";
    host.server->answerWith("10000003");
    dispatch->beforeTurn = nullptr;
    ASSERT_THAT(host.server->requests(), SizeIs(2));
    EXPECT_EQ(field(host.server->requests().back(), "userId"), "user-1");
    EXPECT_EQ(field(host.server->requests().back(), "authtoken"), "token-1");
}

TEST(EventRecorder, AUserWhoChangedBetweenTwoRunsIsNotNoticed) {
    RecorderHost host;
    host.start();
    host.log();
    host.stop();
    host.userId = "user-2";
    host.start();
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().at(0)), ElementsAre("1"));
    EXPECT_EQ(field(host.server->requests().at(0), "userId"), "user-2");
}

TEST(EventRecorder, TheClosureMayLogAndSwitchTheApplicationWhileARejectionIsDealtWith) {
    RecorderHost host;
    host.start([&] {
        if (host.recorder) { // asked again
            host.log();
            host.switchTo("Bank");
            host.log();
            host.recorder->triggerUpload();
            host.log();
        }
        return std::make_shared<Authentication>(host.userId, host.token);
    });
    host.log();
    host.trigger();
    host.userId = "user-2";
    host.server->answerWith("10000003");
    EXPECT_THAT(host.files("Shop", "Events"), IsEmpty());
    EXPECT_THAT(host.files("Shop", "Upload"), IsEmpty());
    host.trigger();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("3", "4"));
    EXPECT_EQ(field(host.server->requests().back(), "appName"), "Bank");
    EXPECT_THAT(host.knownApplications(), ElementsAre("Bank"));
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

TEST(EventRecorder, AnOldApplicationWhoseArchiveIsOnItsWayStaysInTheList) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.switchTo("Bank");
    host.settle();
    EXPECT_EQ(host.server->requests().size(), 1U);
    EXPECT_THAT(host.knownApplications(), ElementsAre("Shop", "Bank"));
    host.server->answer(Error{"connection reset"});
    host.switchTo("Cafe");
    host.settle();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1"));
    EXPECT_EQ(field(host.server->requests().back(), "appName"), "Shop");
}

TEST(EventRecorder, AnOldApplicationWhoseFoldersCannotBeReadIsNotTakenForEmpty) {
    RecorderHost host;
    const auto disk = std::make_shared<ShakyDisk>();
    host.services.fileManager = disk;
    host.start();
    host.log();
    host.switchTo("Bank");
    disk->cannotList = true;
    host.settle();
    disk->cannotList = false;
    EXPECT_THAT(host.knownApplications(), ElementsAre("Shop", "Bank"));
    host.switchTo("Cafe");
    host.settle();
    ASSERT_THAT(host.server->requests(), SizeIs(1));
    EXPECT_THAT(sentEvents(host.server->requests()[0]), ElementsAre("1"));
}

TEST(EventRecorder, AnApplicationWhoseNameIsNoUTF8IsKnownByOneName) {
    RecorderHost host({.appName = "Caf\xE9"});
    host.start();
    host.log();
    host.stop();
    host.start();
    EXPECT_THAT(host.knownApplications(), SizeIs(1));
    host.switchTo("Bank");
    host.settle();
    ASSERT_THAT(host.server->requests(), SizeIs(1));
    EXPECT_THAT(sentEvents(host.server->requests()[0]), ElementsAre("1"));
    host.server->answerWith("200");
    host.switchTo("Shop");
    host.settle();
    EXPECT_THAT(host.knownApplications(), ElementsAre("Shop"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(host.root / "data/Tallyfoot"), {}), 1);
}

TEST(EventRecorder, AKnownApplicationKeepsItsPlaceAndTakesItsNewFields) {
    RecorderHost host;
    host.start();
    host.switchTo("Bank");
    host.stop();
    host.start(std::make_shared<ApplicationInfo>("Shop", "new-id", "Wholesale", "W-1"));
    EXPECT_THAT(host.knownApplications(), ElementsAre("Shop", "Bank"));
    const KnownApplications known(*host.services.userDefaults, *host.services.keyedArchiver);
    EXPECT_EQ(known.list()[0]->appId(), "new-id");
    EXPECT_EQ(known.list()[0]->bizArea(), "Wholesale");
}

TEST(EventRecorder, TheCurrentApplicationIsStoredAtTheStartAndAtASwitch) {
    RecorderHost host;
    const auto current = [&] {
        const auto stored = host.services.userDefaults->object(storekeys::currentApplication);
        const auto coder = host.services.keyedArchiver->unarchivedObject(stored->as<PropertyList::Data>()->bytes);
        return ApplicationInfo(*coder).appName();
    };
    host.start();
    EXPECT_EQ(current(), "Shop");
    host.switchTo("Bank");
    EXPECT_EQ(current(), "Bank");
}

TEST(EventRecorder, EveryWriteToTheStoreIsFollowedByASynchronise) {
    RecorderHost host;
    const auto store = std::make_shared<CountingDefaults>();
    host.services.userDefaults = store;
    host.start();
    host.log();
    host.trigger();
    host.server->answerWith("10000003");
    host.switchTo("Bank");
    host.settle();
    EXPECT_EQ(store->waiting, 0);
    EXPECT_EQ(store->mostWaiting, 1);
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

TEST(EventRecorderDeathTest, AClosureThatReturnsNothingAtARejectionIsFatal) {
    RecorderHost host;
    host.start([&] { return host.recorder ? nullptr : std::make_shared<Authentication>("user-1", "token-1"); });
    host.log();
    host.trigger();
    EXPECT_DEATH(host.server->answerWith("10000003"), "authentication closure returned nothing");
}

TEST(EventRecorderDeathTest, AMissingClosureIsFatal) {
    RecorderHost host;
    EXPECT_DEATH(EventRecorder::make(host.services, host.settings, host.configuration, application("Shop"), nullptr),
                 "no authentication closure");
}

} // namespace
} // namespace tallyfoot::testing
