#include "Timing/RepeaterTest.h"

#include <gmock/gmock.h>

#include <chrono>
#include <optional>
#include <vector>

// What starting, pausing, resetting and firing by hand make of a repeater's state.
namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using State = Repeater::State;
using Mode = Repeater::Mode;
using Interval = Repeater::Interval;

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

} // namespace
} // namespace tallyfoot::testing
