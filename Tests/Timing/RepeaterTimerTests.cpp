#include "Timing/RepeaterTest.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>

// The timers that a repeater asks for, and their ticks.
namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using State = Repeater::State;
using Mode = Repeater::Mode;
using Interval = Repeater::Interval;

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

} // namespace
} // namespace tallyfoot::testing
