#include "Recording/RecorderHost.h"
#include "Recording/SteppedDispatch.h"

#include "Tallyfoot/Platform/UserDefaults.h"
#include "Tallyfoot/Recording/StoreKeys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <limits>
#include <utility>

// What a recorder writes, and when it asks for an upload.
namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

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

} // namespace
} // namespace tallyfoot::testing
