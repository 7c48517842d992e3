#include "Support/ManualDispatch.h"
#include "Timing/SpyDispatch.h"

#include "Tallyfoot/Recording/Timing/Repeater.h"

#include <gmock/gmock.h>

#include <limits>
#include <vector>

namespace tallyfoot {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using State = Repeater::State;
using Mode = Repeater::Mode;
using Interval = Repeater::Interval;
constexpr auto noTolerance = DispatchTimeInterval::nanoseconds(0);

class RepeaterTest : public ::testing::Test {
protected:
    // Ten seconds, counting its ticks and noting its states.
    std::shared_ptr<Repeater> make(Mode mode) {
        return noting(Repeater::make(dispatch, Interval::seconds(10), mode, noTolerance, nullptr, counting()));
    }

    std::shared_ptr<Repeater> started(Mode mode) {
        auto repeater = make(mode);
        repeater->start();
        states.clear();
        return repeater;
    }

    std::shared_ptr<Repeater> noting(std::shared_ptr<Repeater> repeater) {
        repeater->setOnStateChanged([this](Repeater& sender, State state) {
            EXPECT_EQ(sender.state(), state);
            states.push_back(state);
        });
        return repeater;
    }

    Repeater::Observer counting() {
        return [this](Repeater&) { ++ticks; };
    }

    testing::ManualDispatch manual;
    testing::SpyDispatch dispatch{manual};
    std::vector<State> states;
    int ticks = 0;
};

TEST(ObserverIDs, StartAtOneAndCountUp) {
    ObserverIDs ids;
    EXPECT_EQ(ids.next(), 1U);
    EXPECT_EQ(ids.next(), 2U);
}

TEST(ObserverIDs, AfterTheLargestComesZero) {
    ObserverIDs ids(std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(ids.next(), 0U);
    EXPECT_EQ(ids.next(), 1U);
}

TEST(RepeaterState, HasADescription) {
    EXPECT_EQ(description(State::paused), "idle/paused");
    EXPECT_EQ(description(State::running), "running");
    EXPECT_EQ(description(State::executing), "executing");
    EXPECT_EQ(description(State::finished), "finished");
}

TEST(RepeaterState, IsRunningAlsoWhileExecuting) {
    EXPECT_FALSE(isRunning(State::paused));
    EXPECT_TRUE(isRunning(State::running));
    EXPECT_TRUE(isRunning(State::executing));
    EXPECT_FALSE(isRunning(State::finished));
}

TEST(RepeaterState, OnlyItsOwnIsExecutingOrFinished) {
    for (const State state : {State::paused, State::running, State::executing, State::finished}) {
        EXPECT_EQ(isExecuting(state), state == State::executing);
        EXPECT_EQ(isFinished(state), state == State::finished);
    }
}

TEST(RepeaterMode, OnlyAFiniteOneCounts) {
    EXPECT_EQ(Mode::finite(3).countIterations(), 3);
    EXPECT_EQ(Mode::infinite().countIterations(), std::nullopt);
    EXPECT_EQ(Mode::once().countIterations(), std::nullopt);
    EXPECT_FALSE(Mode::finite(3).isInfinite());
    EXPECT_TRUE(Mode::infinite().isInfinite());
    EXPECT_FALSE(Mode::once().isInfinite());
}

// Observers

TEST_F(RepeaterTest, ObserveOnANewOneReturnsOneThenTwo) {
    auto repeater = Repeater::make(dispatch, Interval::seconds(1), Mode::infinite(), noTolerance, nullptr, nullptr);
    EXPECT_EQ(repeater->observe(counting()), 1U);
    EXPECT_EQ(repeater->observe(counting()), 2U);
}

TEST_F(RepeaterTest, TheObserverGivenAtTheStartHasTheFirstId) {
    auto repeater = make(Mode::infinite());
    EXPECT_EQ(repeater->observe(counting()), 2U);
    repeater->remove(1);
    repeater->fire(false);
    EXPECT_EQ(ticks, 1);
}

TEST_F(RepeaterTest, EveryObserverIsCalledWithTheRepeater) {
    auto repeater = started(Mode::once());
    std::vector<const Repeater*> senders;
    for (int i = 0; i < 2; ++i) repeater->observe([&](Repeater& sender) { senders.push_back(&sender); });
    manual.advance(10s);
    EXPECT_EQ(ticks, 1);
    EXPECT_THAT(senders, ElementsAre(repeater.get(), repeater.get()));
}

TEST_F(RepeaterTest, ARemovedObserverIsNotCalled) {
    auto repeater = started(Mode::infinite());
    int others = 0;
    const auto id = repeater->observe([&](Repeater&) { ++others; });
    manual.advance(10s);
    repeater->remove(id);
    manual.advance(10s);
    EXPECT_EQ(others, 1);
    EXPECT_EQ(ticks, 2);
}

TEST_F(RepeaterTest, RemovingAnUnknownObserverDoesNothing) {
    auto repeater = started(Mode::once());
    repeater->remove(99);
    manual.advance(10s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(RepeaterTest, AnObserverMayRemoveItselfInsideItsTick) {
    auto repeater = started(Mode::infinite());
    int others = 0;
    Repeater::ObserverID id = 0;
    id = repeater->observe([&](Repeater& sender) {
        ++others;
        sender.remove(id);
    });
    manual.advance(30s);
    EXPECT_EQ(others, 1);
    EXPECT_EQ(ticks, 3);
}

TEST_F(RepeaterTest, AnObserverKeepsWhatItHoldsBetweenTicks) {
    auto repeater = started(Mode::infinite());
    std::vector<int> counts;
    repeater->observe([&counts, own = 0](Repeater&) mutable { counts.push_back(++own); });
    manual.advance(20s);
    EXPECT_THAT(counts, ElementsAre(1, 2));
}

TEST_F(RepeaterTest, AnEmptyObserverIsSkipped) {
    auto repeater = started(Mode::once());
    repeater->observe(nullptr);
    manual.advance(10s);
    EXPECT_EQ(repeater->state(), State::finished);
}

TEST_F(RepeaterTest, RemovingAllObserversGoesOnTickingUnlessStopped) {
    auto repeater = started(Mode::infinite());
    repeater->removeAllObservers(false);
    EXPECT_EQ(repeater->state(), State::running);
    manual.advance(10s);
    EXPECT_EQ(repeater->state(), State::executing);
    EXPECT_EQ(ticks, 0);
}

TEST_F(RepeaterTest, RemovingAllObserversAndStoppingPausesAndDoesNotFinish) {
    auto repeater = started(Mode::finite(3));
    manual.advance(10s);
    states.clear();
    repeater->removeAllObservers(true);
    EXPECT_THAT(states, ElementsAre(State::paused));
    manual.advance(60s);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(repeater->remainingIterations(), 2);
}

TEST_F(RepeaterTest, StoppingAPausedOneNotifiesNobody) {
    auto repeater = make(Mode::infinite());
    repeater->removeAllObservers(true);
    EXPECT_THAT(states, IsEmpty());
}

// The timer it asks for

TEST_F(RepeaterTest, TheTimerIsScheduledWithIntervalAndTolerance) {
    auto repeater = Repeater::make(dispatch, Interval::seconds(1.5), Mode::infinite(),
                                   DispatchTimeInterval::milliseconds(20), nullptr, counting());
    EXPECT_EQ(dispatch.lastTimer().deadline, 1500ms);
    EXPECT_EQ(dispatch.lastTimer().repeating, 1500ms);
    EXPECT_EQ(dispatch.lastTimer().leeway, 20ms);
    EXPECT_EQ(dispatch.lastTimer().resumes, 0);
}

TEST_F(RepeaterTest, TheTimerOfAOneShotNeverRepeats) {
    auto repeater = make(Mode::once());
    EXPECT_EQ(dispatch.lastTimer().deadline, 10s);
    EXPECT_EQ(dispatch.lastTimer().repeating, std::nullopt);
}

TEST_F(RepeaterTest, ANegativeIntervalIsDueAtOnce) {
    auto repeater = Repeater::once(dispatch, Interval::seconds(-3), nullptr, counting());
    manual.advance(0s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(RepeaterTest, ANegativeIntervalRepeatsWithoutAPause) {
    auto repeater = Repeater::make(dispatch, Interval::seconds(-3), Mode::infinite(), noTolerance, nullptr, counting());
    EXPECT_EQ(dispatch.lastTimer().repeating, 0s);
}

TEST_F(RepeaterTest, WithoutAQueueItMakesItsOwn) {
    auto repeater = make(Mode::once());
    EXPECT_EQ(dispatch.lastTimer().queueLabel, "com.repeat.queue");
}

TEST_F(RepeaterTest, ItTicksOnTheGivenQueueAlsoAfterAReset) {
    const auto queue = manual.makeQueue("ticks");
    bool isOnQueue = false;
    auto repeater =
        Repeater::once(dispatch, Interval::seconds(1), queue, [&](Repeater&) { isOnQueue = queue->isCurrent(); });
    EXPECT_EQ(dispatch.lastTimer().queueLabel, "ticks");
    repeater->reset(std::nullopt, true);
    manual.advance(1s);
    EXPECT_TRUE(isOnQueue);
}

TEST_F(RepeaterTest, TheIntervalCountsFromTheMaking) {
    auto repeater = make(Mode::once());
    manual.advance(9s);
    repeater->start();
    manual.advance(1s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(RepeaterTest, ReleasingItEndsItsTimerInEveryState) {
    auto finished = started(Mode::once());
    manual.advance(10s);
    auto paused = make(Mode::infinite());
    auto executing = started(Mode::infinite());
    manual.advance(10s);
    auto running = started(Mode::infinite());
    ticks = 0;
    for (auto* repeater : {&finished, &paused, &executing, &running}) repeater->reset();
    manual.advance(60s);
    EXPECT_EQ(ticks, 0);
    for (std::size_t i = 0; i < 4; ++i) EXPECT_TRUE(dispatch.timer(i).isReleased); // the spy checked how
}

TEST_F(RepeaterTest, ReleasingItReleasesItsClosures) {
    const auto held = std::make_shared<int>(0);
    auto repeater = Repeater::once(dispatch, Interval::seconds(1), nullptr, [held](Repeater&) {});
    repeater->setOnStateChanged([held](Repeater&, State) {});
    EXPECT_EQ(held.use_count(), 3);
    repeater.reset();
    EXPECT_EQ(held.use_count(), 1);
}

// Starting and pausing

TEST_F(RepeaterTest, ANewOneIsPausedAndDoesNotTick) {
    auto repeater = make(Mode::infinite());
    manual.advance(60s);
    EXPECT_EQ(repeater->state(), State::paused);
    EXPECT_EQ(ticks, 0);
}

TEST_F(RepeaterTest, StartRunsIt) {
    auto repeater = make(Mode::infinite());
    EXPECT_TRUE(repeater->start());
    EXPECT_THAT(states, ElementsAre(State::running));
    manual.advance(10s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(RepeaterTest, StartTellsTheListenerBeforeItsTimerRuns) {
    auto repeater = make(Mode::infinite());
    std::vector<int> resumes;
    repeater->setOnStateChanged([&](Repeater&, State) { resumes.push_back(dispatch.lastTimer().resumes); });
    repeater->start();
    EXPECT_THAT(resumes, ElementsAre(0));
    EXPECT_EQ(dispatch.lastTimer().resumes, 1);
}

TEST_F(RepeaterTest, StartOnARunningOneReturnsFalseAndChangesNothing) {
    auto repeater = started(Mode::infinite());
    EXPECT_FALSE(repeater->start());
    EXPECT_THAT(states, IsEmpty());
    EXPECT_EQ(dispatch.lastTimer().resumes, 1);
    manual.advance(10s);
    states.clear();
    EXPECT_FALSE(repeater->start()); // executing
    EXPECT_THAT(states, IsEmpty());
}

TEST_F(RepeaterTest, PauseOnAPausedOneReturnsFalse) {
    auto repeater = make(Mode::infinite());
    EXPECT_FALSE(repeater->pause());
    EXPECT_THAT(states, IsEmpty());
}

TEST_F(RepeaterTest, PauseOnAFinishedOneReturnsFalse) {
    auto repeater = started(Mode::once());
    manual.advance(10s);
    states.clear();
    EXPECT_FALSE(repeater->pause());
    EXPECT_THAT(states, IsEmpty());
    EXPECT_EQ(repeater->state(), State::finished);
}

TEST_F(RepeaterTest, PauseStopsTheTicksUntilTheNextStart) {
    auto repeater = started(Mode::infinite());
    EXPECT_TRUE(repeater->pause());
    manual.advance(35s);
    EXPECT_EQ(ticks, 0);
    EXPECT_TRUE(repeater->start());
    EXPECT_THAT(states, ElementsAre(State::paused, State::running));
    manual.advance(0s);
    EXPECT_EQ(ticks, 1); // the missed ones come as one
}

TEST_F(RepeaterTest, PauseAfterATickLeavesExecuting) {
    auto repeater = started(Mode::infinite());
    manual.advance(10s);
    EXPECT_TRUE(repeater->pause());
    EXPECT_THAT(states, ElementsAre(State::executing, State::paused));
}

TEST_F(RepeaterTest, ATickOnItsWayDuringAPauseComesWithTheNextStart) {
    for (const Mode mode : {Mode::once(), Mode::infinite()}) {
        ticks = 0;
        auto repeater = started(mode);
        const auto handler = dispatch.lastTimer().handler;
        repeater->pause();
        handler();
        EXPECT_EQ(ticks, 0);
        EXPECT_EQ(repeater->state(), State::paused);
        repeater->start();
        manual.advance(0s);
        EXPECT_EQ(ticks, 1);
        repeater->pause();
        repeater->start();
        manual.advance(0s);
        EXPECT_EQ(ticks, 1); // and only once
    }
}

TEST_F(RepeaterTest, ATickOfTheFormerTimerIsNoTickOfTheNewOne) {
    auto repeater = started(Mode::once());
    const auto handler = dispatch.lastTimer().handler;
    repeater->reset(std::nullopt, true);
    handler();
    EXPECT_EQ(ticks, 0);
    manual.advance(10s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(RepeaterTest, ATickAfterTheReleaseIsNone) {
    auto repeater = started(Mode::infinite());
    const auto handler = dispatch.lastTimer().handler;
    repeater.reset();
    handler();
    EXPECT_EQ(ticks, 0);
}

// Ticking

TEST_F(RepeaterTest, OnceTicksExactlyOnceAndEndsFinished) {
    auto repeater = noting(Repeater::once(dispatch, Interval::seconds(2), nullptr, counting()));
    EXPECT_EQ(repeater->state(), State::running);
    manual.advance(1999ms);
    EXPECT_EQ(ticks, 0);
    manual.advance(60s);
    EXPECT_EQ(ticks, 1);
    EXPECT_THAT(states, ElementsAre(State::executing, State::finished));
    EXPECT_EQ(repeater->remainingIterations(), std::nullopt);
}

TEST_F(RepeaterTest, EveryWithACountTicksSoOftenAndEndsFinished) {
    auto repeater = noting(Repeater::every(dispatch, Interval::seconds(1.5), 2, nullptr, counting()));
    EXPECT_EQ(dispatch.lastTimer().repeating, 1500ms);
    manual.advance(1500ms);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(repeater->remainingIterations(), 1);
    manual.advance(60s);
    EXPECT_EQ(ticks, 2);
    EXPECT_EQ(repeater->remainingIterations(), 0);
    EXPECT_THAT(states, ElementsAre(State::executing, State::executing, State::finished));
    EXPECT_EQ(dispatch.lastTimer().suspends, 1);
}

TEST_F(RepeaterTest, StartOnAFinishedOneRunsItAgainForAllItsTicks) {
    auto repeater = noting(Repeater::every(dispatch, Interval::seconds(1.5), 2, nullptr, counting()));
    manual.advance(3s);
    states.clear();
    EXPECT_TRUE(repeater->start());
    EXPECT_THAT(states, ElementsAre(State::paused, State::running));
    EXPECT_EQ(repeater->remainingIterations(), 2);
    manual.advance(60s);
    EXPECT_EQ(ticks, 4);
    EXPECT_EQ(repeater->state(), State::finished);
}

TEST_F(RepeaterTest, AnInfiniteOneStaysExecutingAfterItsFirstTick) {
    auto repeater = noting(Repeater::every(dispatch, Interval::seconds(1), std::nullopt, nullptr, counting()));
    manual.advance(3s);
    EXPECT_EQ(ticks, 3);
    EXPECT_EQ(repeater->state(), State::executing);
    EXPECT_THAT(states, ElementsAre(State::executing, State::executing, State::executing));
}

TEST_F(RepeaterTest, ObserversAreCalledWhileExecutingAndBeforeFinished) {
    auto repeater = started(Mode::once());
    repeater->observe([&](Repeater& sender) {
        EXPECT_EQ(sender.state(), State::executing);
        EXPECT_THAT(states, ElementsAre(State::executing));
    });
    manual.advance(10s);
    EXPECT_THAT(states, ElementsAre(State::executing, State::finished));
}

TEST_F(RepeaterTest, ACountOfZeroIsPassedAtTheFirstTickAndNeverReached) {
    auto repeater = started(Mode::finite(0));
    manual.advance(20s);
    EXPECT_EQ(ticks, 2);
    EXPECT_EQ(repeater->remainingIterations(), -2);
    EXPECT_EQ(repeater->state(), State::executing);
}

TEST_F(RepeaterTest, ATickOfAFinishedOneByHandDoesNotFinishItAgain) {
    auto repeater = started(Mode::finite(1));
    manual.advance(10s);
    states.clear();
    repeater->fire(false);
    EXPECT_THAT(states, ElementsAre(State::executing));
    EXPECT_EQ(repeater->remainingIterations(), -1);
    repeater->reset(std::nullopt, true); // and its timer is in order
    manual.advance(10s);
    EXPECT_EQ(repeater->state(), State::finished);
}

TEST(RepeaterDeathTest, ACountThatUnderflowsIsFatal) {
    testing::ManualDispatch dispatch;
    auto repeater =
        Repeater::make(dispatch, Interval::seconds(1), Mode::finite(std::numeric_limits<std::int64_t>::min()),
                       noTolerance, nullptr, [](Repeater&) {});
    EXPECT_DEATH(repeater->fire(false), "underflow");
}

TEST(RepeaterDeathTest, AnIntervalThatOverflowsIsFatal) {
    testing::ManualDispatch dispatch;
    EXPECT_DEATH(Repeater::once(dispatch, Interval::days(std::numeric_limits<std::int64_t>::max()), nullptr, nullptr),
                 "overflow");
}

// Resetting

TEST_F(RepeaterTest, ResetOfARunningOnePausesItAndBuildsANewTimer) {
    auto repeater = started(Mode::finite(3));
    manual.advance(10s);
    states.clear();
    repeater->reset(std::nullopt, false);
    EXPECT_THAT(states, ElementsAre(State::paused, State::paused)); // it stops, then it is new
    EXPECT_EQ(repeater->remainingIterations(), 3);
    EXPECT_TRUE(dispatch.timer(0).isReleased);
    EXPECT_EQ(dispatch.timersMade(), 2U);
    manual.advance(60s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(RepeaterTest, ResetOfAPausedOneNotifiesOnce) {
    auto repeater = make(Mode::infinite());
    repeater->reset(std::nullopt, false);
    EXPECT_THAT(states, ElementsAre(State::paused));
    EXPECT_EQ(dispatch.timer(0).resumes, 1); // a cancelled source is not left suspended
}

TEST_F(RepeaterTest, ResetOfAFinishedOneMakesItPaused) {
    auto repeater = started(Mode::once());
    manual.advance(10s);
    states.clear();
    repeater->reset(std::nullopt, false);
    EXPECT_THAT(states, ElementsAre(State::paused));
    manual.advance(60s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(RepeaterTest, ResetTellsEveryChangeWhateverTheStateWas) {
    for (const State former : {State::paused, State::running, State::executing, State::finished}) {
        for (const bool restart : {false, true}) {
            auto repeater = make(former == State::finished ? Mode::once() : Mode::infinite());
            if (former != State::paused) repeater->start();
            if (former == State::executing || former == State::finished) manual.advance(10s);
            ASSERT_EQ(repeater->state(), former);
            std::vector<State> expected{State::paused};
            if (isRunning(former)) expected.insert(expected.begin(), State::paused);
            if (restart) expected.push_back(State::running);
            states.clear();
            repeater->reset(std::nullopt, restart);
            EXPECT_EQ(states, expected) << description(former);
            ticks = 0;
            manual.advance(10s);
            EXPECT_EQ(ticks, restart ? 1 : 0) << description(former);
        }
    }
}

TEST_F(RepeaterTest, ResetWithRestartBeginsOneFullIntervalFromNow) {
    auto repeater = started(Mode::once());
    manual.advance(9s);
    repeater->reset(std::nullopt, true);
    EXPECT_THAT(states, ElementsAre(State::paused, State::paused, State::running));
    manual.advance(9s);
    EXPECT_EQ(ticks, 0);
    manual.advance(1s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(RepeaterTest, ResetKeepsANewIntervalForLaterResets) {
    auto repeater = started(Mode::once());
    repeater->reset(Interval::seconds(2), true);
    manual.advance(2s);
    EXPECT_EQ(ticks, 1);
    repeater->start();
    manual.advance(2s);
    EXPECT_EQ(ticks, 2);
}

// Firing by hand

TEST_F(RepeaterTest, FireTicksAtOnceOnTheCallersThread) {
    const auto queue = manual.makeQueue("ticks");
    auto repeater = Repeater::every(dispatch, Interval::seconds(10), 3, queue, [&](Repeater&) {
        ++ticks;
        EXPECT_FALSE(queue->isCurrent());
    });
    repeater->fire(false);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(repeater->state(), State::executing);
    EXPECT_EQ(repeater->remainingIterations(), 2);
}

TEST_F(RepeaterTest, FireAndPausePauses) {
    auto repeater = started(Mode::infinite());
    repeater->fire(true);
    EXPECT_THAT(states, ElementsAre(State::executing, State::paused));
    manual.advance(60s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(RepeaterTest, FireAndPauseOfAOneShotLeavesItFinished) {
    auto repeater = started(Mode::once());
    repeater->fire(true);
    EXPECT_THAT(states, ElementsAre(State::executing, State::finished));
    manual.advance(60s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(RepeaterTest, FireAndPauseOfAPausedOneLeavesItStartable) {
    auto repeater = make(Mode::infinite());
    repeater->fire(true);
    EXPECT_THAT(states, ElementsAre(State::executing, State::paused));
    EXPECT_TRUE(repeater->start());
    manual.advance(10s);
    EXPECT_EQ(ticks, 2);
}

TEST_F(RepeaterTest, FireOfAPausedOneDoesNotStartItsTimer) {
    auto repeater = make(Mode::infinite());
    repeater->fire(false);
    EXPECT_EQ(repeater->state(), State::executing);
    manual.advance(60s);
    EXPECT_EQ(ticks, 1);
}

// From inside

TEST_F(RepeaterTest, ItMayBeRearmedInsideItsOwnTick) {
    auto repeater = started(Mode::once());
    repeater->observe([&](Repeater& sender) {
        if (ticks < 3) sender.reset(Interval::seconds(5), true);
    });
    manual.advance(10s);
    EXPECT_THAT(states, ElementsAre(State::executing, State::paused, State::paused, State::running));
    manual.advance(60s);
    EXPECT_EQ(ticks, 3);
    EXPECT_EQ(repeater->state(), State::finished);
}

TEST_F(RepeaterTest, AResetInsideATickBeginsAllTheTicksAnew) {
    auto repeater = started(Mode::finite(2));
    repeater->observe([&](Repeater& sender) {
        if (ticks == 2) sender.reset(std::nullopt, true);
    });
    manual.advance(20s);
    EXPECT_EQ(repeater->remainingIterations(), 2);
    manual.advance(60s);
    EXPECT_EQ(ticks, 4);
    EXPECT_EQ(repeater->state(), State::finished);
}

TEST_F(RepeaterTest, StartInsideATickReturnsFalse) {
    auto repeater = started(Mode::once());
    repeater->observe([](Repeater& sender) { EXPECT_FALSE(sender.start()); });
    manual.advance(10s);
    EXPECT_EQ(repeater->state(), State::finished);
}

TEST_F(RepeaterTest, PauseInsideATickStaysPaused) {
    auto repeater = started(Mode::finite(3));
    repeater->observe([](Repeater& sender) { EXPECT_TRUE(sender.pause()); });
    manual.advance(60s);
    EXPECT_THAT(states, ElementsAre(State::executing, State::paused));
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(repeater->remainingIterations(), 2);
}

TEST_F(RepeaterTest, AOneShotPausedInsideItsTickComesAgainWhenStarted) {
    auto repeater = started(Mode::once());
    const auto id = repeater->observe([](Repeater& sender) { sender.pause(); });
    manual.advance(10s);
    EXPECT_EQ(repeater->state(), State::paused);
    repeater->remove(id);
    repeater->start();
    manual.advance(10s);
    EXPECT_EQ(ticks, 2);
    EXPECT_EQ(repeater->state(), State::finished);
}

TEST_F(RepeaterTest, AOneShotPausedInsideATickByHandKeepsItsDeadline) {
    auto repeater = started(Mode::once());
    manual.advance(4s);
    const auto id = repeater->observe([](Repeater& sender) { sender.pause(); });
    repeater->fire(false);
    EXPECT_EQ(repeater->state(), State::paused);
    repeater->remove(id);
    repeater->start();
    manual.advance(6s);
    EXPECT_EQ(ticks, 2);
}

TEST_F(RepeaterTest, AFinishedOneMayBeStartedFromItsStateListener) {
    auto repeater = started(Mode::once());
    repeater->setOnStateChanged([&](Repeater& sender, State state) {
        if (state == State::finished && ticks < 3) sender.start();
    });
    manual.advance(60s);
    EXPECT_EQ(ticks, 3);
}

TEST_F(RepeaterTest, AListenerThatPausesWhatWasStartedKeepsItPaused) {
    auto repeater = make(Mode::infinite());
    repeater->setOnStateChanged([](Repeater& sender, State state) {
        if (state == State::running) sender.pause();
    });
    repeater->start();
    EXPECT_EQ(repeater->state(), State::paused);
    manual.advance(60s);
    EXPECT_EQ(ticks, 0);
    repeater->setOnStateChanged(nullptr);
    repeater->start();
    manual.advance(0s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(RepeaterTest, AListenerThatStartsWhatIsResetKeepsItsTimerInOrder) {
    auto repeater = started(Mode::infinite());
    repeater->setOnStateChanged([](Repeater& sender, State state) {
        if (state == State::paused) sender.start();
    });
    repeater->reset(std::nullopt, true);
    EXPECT_EQ(repeater->state(), State::running);
    manual.advance(10s);
    EXPECT_EQ(ticks, 1);
}

TEST_F(RepeaterTest, ItMayBeReleasedInsideItsOwnTick) {
    auto repeater = started(Mode::infinite());
    int others = 0;
    repeater->removeAllObservers(false);
    for (int i = 0; i < 2; ++i) {
        repeater->observe([&](Repeater&) {
            ++others;
            repeater.reset();
        });
    }
    manual.advance(60s);
    EXPECT_EQ(others, 2); // the tick under way is finished
    EXPECT_TRUE(dispatch.lastTimer().isReleased);
}

TEST_F(RepeaterTest, ItMayBeReleasedByItsStateListenerInEveryCall) {
    for (const State last : {State::running, State::executing, State::finished}) {
        auto repeater = make(Mode::once());
        repeater->setOnStateChanged([&, last](Repeater&, State state) {
            if (state == last) repeater.reset();
        });
        repeater->start();
        manual.advance(10s);
        EXPECT_EQ(repeater, nullptr);
        EXPECT_TRUE(dispatch.lastTimer().isReleased);
    }
    auto repeater = started(Mode::infinite());
    repeater->setOnStateChanged([&](Repeater&, State) { repeater.reset(); });
    repeater->reset(std::nullopt, true);
    EXPECT_EQ(repeater, nullptr);
    EXPECT_TRUE(dispatch.lastTimer().isReleased);
}

TEST_F(RepeaterTest, AClosureMayTouchTheRepeaterWhileItIsReleased) {
    struct Toucher {
        Toucher(std::shared_ptr<Repeater>& owner, int& count) : repeater(owner), touched(count) {}

        std::shared_ptr<Repeater>& repeater;
        int& touched;
        ~Toucher() {
            if (repeater) repeater->observe([](Repeater&) {});
            ++touched;
        }
    };
    int touched = 0;
    auto repeater = started(Mode::infinite());
    repeater->setOnStateChanged([toucher = std::make_shared<Toucher>(repeater, touched)](Repeater&, State) {});
    repeater->setOnStateChanged(nullptr);
    const auto id = repeater->observe([toucher = std::make_shared<Toucher>(repeater, touched)](Repeater&) {});
    repeater->remove(id);
    repeater->observe([toucher = std::make_shared<Toucher>(repeater, touched)](Repeater&) {});
    repeater->removeAllObservers(false);
    EXPECT_EQ(touched, 3);
}

} // namespace
} // namespace tallyfoot
