#include "Support/ManualClock.h"
#include "Support/ManualDispatch.h"
#include "Support/MemoryUserDefaults.h"
#include "Support/Occurrences.h"
#include "Support/RecordingConsole.h"

#include "Tallyfoot/Platform/Posix/PosixClock.h"
#include "Tallyfoot/Platform/Posix/PosixDispatch.h"
#include "Tallyfoot/Recording/FrequencyMonitor.h"
#include "Tallyfoot/Recording/StoreKeys.h"

#include <gmock/gmock.h>

#include <atomic>
#include <limits>
#include <thread>
#include <vector>

namespace tallyfoot {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
constexpr double infinity = std::numeric_limits<double>::infinity();

class FrequencyMonitorTest : public ::testing::Test {
protected:
    // Not started, a period of a minute, counting its triggers.
    std::shared_ptr<FrequencyMonitor> make(Repeater::Interval frequency = Repeater::Interval::seconds(60)) {
        return FrequencyMonitor::make({dispatch, *clock, store, DebugConsole(console, showOutput)}, frequency);
    }

    std::shared_ptr<FrequencyMonitor> makeCounting() {
        auto monitor = make();
        monitor->setTriggerUpload([this] { ++triggers; });
        return monitor;
    }

    std::shared_ptr<FrequencyMonitor> started() {
        auto monitor = makeCounting();
        monitor->start();
        return monitor;
    }

    void count(std::int64_t events) { store.setInteger(storekeys::eventCount, events); }
    void uploaded(double secondsAgo) {
        store.setReal(storekeys::eventLastUpload, timeIntervalSince1970(clock->now()) - secondsAgo);
    }

    const std::shared_ptr<testing::ManualClock> clock = std::make_shared<testing::ManualClock>();
    testing::ManualDispatch dispatch{{.clock = clock}};
    testing::MemoryUserDefaults store;
    testing::RecordingConsole console;
    std::atomic<bool> showOutput{true};
    int triggers = 0;
};

constexpr auto noEvents = "\"No events to upload. Restarting upload timer\"";

// Starting

TEST_F(FrequencyMonitorTest, WithoutAFormerUploadItWaitsForAFullPeriod) {
    count(1);
    auto monitor = started();
    dispatch.advance(59999ms);
    EXPECT_EQ(triggers, 0);
    dispatch.advance(1ms);
    EXPECT_EQ(triggers, 1);
}

TEST_F(FrequencyMonitorTest, TwoSecondsAfterAnUploadItWaitsForTheOther58) {
    count(1);
    uploaded(2);
    auto monitor = started();
    dispatch.advance(57999ms);
    EXPECT_EQ(triggers, 0);
    dispatch.advance(1ms);
    EXPECT_EQ(triggers, 1);
}

TEST_F(FrequencyMonitorTest, WithinThePeriodOnlyTheRestIsArmed) {
    uploaded(2);
    auto monitor = started();
    dispatch.advance(58s); // nothing counted: a full period from here
    EXPECT_THAT(console.lines(), ElementsAre(noEvents));
    count(1);
    dispatch.advance(59999ms);
    EXPECT_EQ(triggers, 0);
    dispatch.advance(1ms);
    EXPECT_EQ(triggers, 1);
}

TEST_F(FrequencyMonitorTest, AfterMoreThanOnePeriodItTicksDuringStart) {
    count(1);
    uploaded(61);
    auto monitor = started();
    EXPECT_EQ(triggers, 1);
    dispatch.advance(600s);
    EXPECT_EQ(triggers, 1); // the trigger restarts the period, nobody else
}

TEST_F(FrequencyMonitorTest, AfterExactlyOnePeriodItTicksDuringStart) {
    count(1);
    uploaded(60);
    auto monitor = started();
    EXPECT_EQ(triggers, 1);
}

TEST_F(FrequencyMonitorTest, AnOverduePeriodWithoutEventsBeginsAnother) {
    uploaded(1000);
    auto monitor = started();
    EXPECT_EQ(triggers, 0);
    EXPECT_THAT(console.lines(), ElementsAre(noEvents));
    count(1);
    dispatch.advance(60s);
    EXPECT_EQ(triggers, 1);
}

TEST_F(FrequencyMonitorTest, ATimeOfUploadThatLiesAheadMakesTheFirstPeriodLonger) {
    count(1);
    uploaded(-30); // the clock was set back
    auto monitor = started();
    dispatch.advance(89999ms);
    EXPECT_EQ(triggers, 0);
    dispatch.advance(1ms);
    EXPECT_EQ(triggers, 1);
}

TEST_F(FrequencyMonitorTest, ATimeOfUploadThatCannotBeCountsAsNone) {
    for (const double time : {std::numeric_limits<double>::quiet_NaN(), infinity, 1e300}) {
        triggers = 0;
        count(1);
        store.setReal(storekeys::eventLastUpload, time);
        auto monitor = started();
        EXPECT_EQ(triggers, 0);
        dispatch.advance(60s);
        EXPECT_EQ(triggers, 1);
        monitor->stop();
    }
}

TEST_F(FrequencyMonitorTest, ATimeOfUploadBeforeAllTimeIsOverdue) {
    for (const double time : {-infinity, -1e300, 1.0}) {
        triggers = 0;
        count(1);
        store.setReal(storekeys::eventLastUpload, time);
        auto monitor = started();
        EXPECT_EQ(triggers, 1);
    }
}

TEST_F(FrequencyMonitorTest, ThePeriodMayComeInAnyUnit) {
    count(1);
    uploaded(60);
    auto monitor = make(Repeater::Interval::minutes(2));
    monitor->setTriggerUpload([this] { ++triggers; });
    monitor->start();
    dispatch.advance(59999ms);
    EXPECT_EQ(triggers, 0);
    dispatch.advance(1ms);
    EXPECT_EQ(triggers, 1);
}

TEST(FrequencyMonitorDeathTest, APeriodThatIsNotFiniteIsFatal) {
    testing::ManualDispatch dispatch;
    testing::ManualClock clock;
    testing::MemoryUserDefaults store;
    testing::RecordingConsole console;
    const std::atomic<bool> showOutput{true};
    auto monitor = FrequencyMonitor::make({dispatch, clock, store, DebugConsole(console, showOutput)},
                                          Repeater::Interval::seconds(infinity));
    EXPECT_DEATH(monitor->start(), "not finite");
}

TEST_F(FrequencyMonitorTest, RestartBeforeStartIsFatal) {
    auto monitor = make();
    EXPECT_DEATH(monitor->restart(), "before it was started");
}

// Ticking

TEST_F(FrequencyMonitorTest, WithoutEventsItSaysSoAndWaitsForAnotherPeriod) {
    auto monitor = started();
    dispatch.advance(60s);
    EXPECT_EQ(triggers, 0);
    EXPECT_THAT(console.lines(), ElementsAre(noEvents));
    dispatch.advance(120s);
    EXPECT_THAT(console.lines(), ElementsAre(noEvents, noEvents, noEvents));
    count(1);
    dispatch.advance(60s);
    EXPECT_EQ(triggers, 1);
}

TEST_F(FrequencyMonitorTest, ACountBelowZeroIsNoEvents) {
    count(-5);
    auto monitor = started();
    dispatch.advance(60s);
    EXPECT_EQ(triggers, 0);
    EXPECT_THAT(console.lines(), ElementsAre(noEvents));
}

TEST_F(FrequencyMonitorTest, WithTheConsoleOffNothingIsPrinted) {
    showOutput = false;
    auto monitor = started();
    monitor->setDebugTimerEnabled(true);
    dispatch.advance(60s);
    count(1);
    dispatch.advance(60s);
    EXPECT_EQ(triggers, 1);
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(FrequencyMonitorTest, ATriggerThatRestartsTheMonitorComesEveryPeriod) {
    auto monitor = make();
    monitor->setTriggerUpload([&] {
        ++triggers;
        monitor->restart();
    });
    count(1);
    monitor->start();
    dispatch.advance(60s);
    EXPECT_EQ(triggers, 1);
    dispatch.advance(59s);
    EXPECT_EQ(triggers, 1);
    dispatch.advance(61s);
    EXPECT_EQ(triggers, 3);
}

TEST_F(FrequencyMonitorTest, RestartBeginsAFullPeriodFromNow) {
    count(1);
    auto monitor = started();
    dispatch.advance(50s);
    monitor->restart();
    dispatch.advance(59999ms);
    EXPECT_EQ(triggers, 0);
    dispatch.advance(1ms);
    EXPECT_EQ(triggers, 1);
    dispatch.advance(600s);
    EXPECT_EQ(triggers, 1);
}

TEST_F(FrequencyMonitorTest, TheRestOfAFormerPeriodEndsInSpiteOfARestart) {
    count(1);
    uploaded(30);
    auto monitor = started();
    dispatch.advance(10s);
    monitor->restart(); // by another trigger
    dispatch.advance(20s);
    EXPECT_EQ(triggers, 1);
    dispatch.advance(40s);
    EXPECT_EQ(triggers, 2);
}

// The trigger

TEST_F(FrequencyMonitorTest, AnOverduePeriodIsToldToTheTriggerSetAfterwards) {
    count(1);
    uploaded(61);
    auto monitor = make();
    monitor->start();
    monitor->setTriggerUpload([this] { ++triggers; });
    EXPECT_EQ(triggers, 1);
    monitor->setTriggerUpload([this] { ++triggers; });
    EXPECT_EQ(triggers, 1);
}

TEST_F(FrequencyMonitorTest, TheTriggerThatIsToldWhileItIsSetMayRestart) {
    count(1);
    uploaded(61);
    auto monitor = make();
    monitor->start();
    monitor->setTriggerUpload([&] {
        ++triggers;
        monitor->restart();
    });
    EXPECT_EQ(triggers, 1);
    dispatch.advance(60s);
    EXPECT_EQ(triggers, 2);
}

TEST_F(FrequencyMonitorTest, APeriodThatIsNotOverdueIsNotToldToTheTriggerSetAfterwards) {
    count(1);
    uploaded(59);
    auto monitor = make();
    monitor->start();
    monitor->setTriggerUpload([this] { ++triggers; });
    EXPECT_EQ(triggers, 0);
    dispatch.advance(1s);
    EXPECT_EQ(triggers, 1);
}

TEST_F(FrequencyMonitorTest, ARestartForgetsWhatWasOwed) {
    count(1);
    uploaded(61);
    auto monitor = make();
    monitor->start();
    monitor->restart();
    monitor->setTriggerUpload([this] { ++triggers; });
    EXPECT_EQ(triggers, 0);
}

TEST_F(FrequencyMonitorTest, AnEmptyTriggerIsNotCalledAndOwesTheNext) {
    count(1);
    auto monitor = started();
    monitor->setTriggerUpload(nullptr);
    dispatch.advance(60s);
    monitor->setTriggerUpload(nullptr);
    EXPECT_EQ(triggers, 0);
    monitor->setTriggerUpload([this] { ++triggers; });
    EXPECT_EQ(triggers, 1);
}

TEST_F(FrequencyMonitorTest, AReplacedTriggerIsReleased) {
    const auto held = std::make_shared<int>(0);
    auto monitor = make();
    monitor->setTriggerUpload([held] {});
    EXPECT_EQ(held.use_count(), 2);
    monitor->setTriggerUpload([this] { ++triggers; });
    EXPECT_EQ(held.use_count(), 1);
}

// Stopping

TEST_F(FrequencyMonitorTest, AfterStopNoTickBegins) {
    count(1);
    for (const double secondsAgo : {10.0, 1000.0, 1.7e9}) {
        uploaded(secondsAgo);
        auto monitor = started();
        monitor->restart();
        triggers = 0;
        monitor->stop();
        EXPECT_EQ(dispatch.armedTimers(), 0U);
        dispatch.advance(600s);
        EXPECT_EQ(triggers, 0);
    }
}

TEST_F(FrequencyMonitorTest, StoppedBeforeItsStartItArmsNothing) {
    for (const double secondsAgo : {10.0, 1000.0}) {
        uploaded(secondsAgo);
        auto monitor = makeCounting();
        monitor->stop();
        monitor->start();
        EXPECT_EQ(dispatch.armedTimers(), 0U);
    }
}

TEST_F(FrequencyMonitorTest, AfterStopARestartDoesNothing) {
    count(1);
    auto monitor = started();
    monitor->stop();
    monitor->restart();
    dispatch.advance(600s);
    EXPECT_EQ(triggers, 0);
}

TEST_F(FrequencyMonitorTest, AfterStopNothingIsOwed) {
    count(1);
    uploaded(61);
    auto monitor = make();
    monitor->start();
    monitor->stop();
    monitor->setTriggerUpload([this] { ++triggers; });
    EXPECT_EQ(triggers, 0);
}

TEST_F(FrequencyMonitorTest, ATickMayStopItsMonitor) {
    count(1);
    auto monitor = make();
    monitor->setTriggerUpload([&] {
        ++triggers;
        monitor->stop();
        monitor->restart();
    });
    monitor->start();
    dispatch.advance(600s);
    EXPECT_EQ(triggers, 1);
}

TEST_F(FrequencyMonitorTest, ATickMayReleaseItsMonitor) {
    count(1);
    for (const double time : {timeIntervalSince1970(clock->now()) - 30, 0.0}) { // the rest's timer; a full period's
        store.setReal(storekeys::eventLastUpload, time);
        triggers = 0;
        auto monitor = make();
        const std::weak_ptr<FrequencyMonitor> watched = monitor;
        monitor->setTriggerUpload([&] {
            ++triggers;
            monitor.reset();
        });
        monitor->start();
        dispatch.advance(600s);
        EXPECT_EQ(triggers, 1);
        EXPECT_TRUE(watched.expired());
    }
}

TEST_F(FrequencyMonitorTest, ReleasingItEndsItsTimers) {
    count(1);
    uploaded(30);
    auto monitor = started();
    monitor->restart();
    const std::weak_ptr<FrequencyMonitor> watched = monitor;
    monitor.reset();
    EXPECT_TRUE(watched.expired());
    dispatch.advance(600s);
    EXPECT_EQ(triggers, 0);
}

// The countdown

TEST_F(FrequencyMonitorTest, WithoutTheDebugTimerThereIsNoCountdown) {
    count(1);
    uploaded(30);
    auto monitor = started();
    monitor->restart();
    EXPECT_EQ(dispatch.armedTimers(), 2U); // the rest and the full period
    dispatch.advance(29s);
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(FrequencyMonitorTest, TheCountdownGoesFromThePeriodToZeroOneSecondApart) {
    count(1);
    auto monitor = make(Repeater::Interval::seconds(3.7));
    monitor->setDebugTimerEnabled(true);
    monitor->start();
    EXPECT_THAT(console.lines(), ElementsAre("\"Uploading starts in 3\""));
    dispatch.advance(2s);
    EXPECT_THAT(console.lines(),
                ElementsAre("\"Uploading starts in 3\"", "\"Uploading starts in 2\"", "\"Uploading starts in 1\""));
    console.clear();
    dispatch.advance(600s);
    EXPECT_THAT(console.lines(), ElementsAre("\"Uploading starts in 0\""));
}

TEST_F(FrequencyMonitorTest, TheCountdownOfARestIsThatRest) {
    count(1);
    uploaded(57);
    auto monitor = make();
    monitor->setDebugTimerEnabled(true);
    monitor->start();
    dispatch.advance(1s);
    EXPECT_THAT(console.lines(), ElementsAre("\"Uploading starts in 3\"", "\"Uploading starts in 2\""));
}

TEST_F(FrequencyMonitorTest, ARestartReplacesTheCountdown) {
    auto monitor = started();
    monitor->setDebugTimerEnabled(true);
    monitor->restart();
    dispatch.advance(10s);
    monitor->restart();
    console.clear();
    dispatch.advance(2s);
    EXPECT_THAT(console.lines(), ElementsAre("\"Uploading starts in 59\"", "\"Uploading starts in 58\""));
}

TEST_F(FrequencyMonitorTest, StopEndsTheCountdown) {
    auto monitor = started();
    monitor->setDebugTimerEnabled(true);
    monitor->restart();
    monitor->stop();
    console.clear();
    dispatch.advance(600s);
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(FrequencyMonitorTest, ACountdownFromMoreSecondsThanAnIntegerHoldsIsFatal) {
    auto monitor = make(Repeater::Interval::minutes(std::numeric_limits<std::int64_t>::max() / 60));
    monitor->start(); // the period alone may be as long as that
    monitor->setDebugTimerEnabled(true);
    EXPECT_DEATH(monitor->restart(), "countdown from no whole number");
}

TEST_F(FrequencyMonitorTest, ACountdownThatUnderflowsIsFatal) {
    count(1);
    auto monitor = make(Repeater::Interval::minutes(std::numeric_limits<std::int64_t>::min() / 60));
    monitor->setDebugTimerEnabled(true);
    monitor->start();
    EXPECT_DEATH(dispatch.advance(1s), "countdown underflows");
}

// On real timers

// A tick under way when a test ends still has what it stands on.
struct LastingServices {
    PosixDispatch dispatch;
    PosixClock clock;
    testing::MemoryUserDefaults store;
    testing::RecordingConsole console;
    std::atomic<bool> showOutput{true};
    testing::Occurrences triggers;
};

LastingServices& lasting() {
    static auto* const services = new LastingServices;
    return *services;
}

std::shared_ptr<FrequencyMonitor> makeLasting() {
    auto& services = lasting();
    services.store.setInteger(storekeys::eventCount, 1);
    return FrequencyMonitor::make(
        {services.dispatch, services.clock, services.store, DebugConsole(services.console, services.showOutput)},
        Repeater::Interval::milliseconds(10));
}

TEST(FrequencyMonitorOnThreads, TriggersEveryPeriodUntilItIsReleasedInsideATick) {
    auto& triggers = lasting().triggers;
    testing::Occurrences ended;
    Exclusive<std::shared_ptr<FrequencyMonitor>> owner(makeLasting());
    owner.copy()->setTriggerUpload([&] {
        triggers.add();
        if (triggers.count() < 3) return owner.copy()->restart();
        owner.exchange(nullptr);
        ended.add();
    });
    owner.copy()->start();
    EXPECT_TRUE(ended.waitFor(1));
    EXPECT_EQ(triggers.count(), 3);
}

TEST(FrequencyMonitorOnThreads, MayBeRestartedAndStoppedFromSeveralThreads) {
    auto& triggers = lasting().triggers;
    auto monitor = makeLasting();
    monitor->setDebugTimerEnabled(true);
    monitor->setTriggerUpload([&triggers, weak = std::weak_ptr(monitor)] {
        triggers.add();
        if (const auto strong = weak.lock()) strong->restart();
    });
    monitor->start();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 200; ++j) monitor->restart();
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_TRUE(triggers.waitFor(triggers.count() + 2)); // after all that it still triggers
    threads.clear();
    for (int i = 0; i < 2; ++i) threads.emplace_back([&] { monitor->stop(); });
    for (int i = 0; i < 2; ++i) threads.emplace_back([&] { monitor->restart(); });
    for (auto& thread : threads) thread.join();
}

} // namespace
} // namespace tallyfoot
