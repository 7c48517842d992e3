#include "Support/ManualDispatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tallyfoot::testing {

namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(ManualDispatch, NothingHappensUntilTheTestSaysSo) {
    ManualDispatch dispatch;
    const auto queue = dispatch.makeQueue("queue");
    const auto timer = dispatch.makeTimerSource(queue);
    std::vector<int> ran;
    queue->async([&] { ran.push_back(1); });
    timer->setEventHandler([&] { ran.push_back(2); });
    timer->schedule(0ns, std::nullopt, 0ns);
    timer->resume();
    EXPECT_THAT(ran, IsEmpty());
    EXPECT_EQ(dispatch.waitingBlocks(), 1U);
    EXPECT_EQ(dispatch.armedTimers(), 1U);
    dispatch.drain();
    EXPECT_THAT(ran, ElementsAre(1));
    dispatch.advance(0ns);
    EXPECT_THAT(ran, ElementsAre(1, 2));
    EXPECT_EQ(dispatch.waitingBlocks(), 0U);
    EXPECT_EQ(dispatch.armedTimers(), 0U);
}

TEST(ManualDispatch, ATimerTicksExactlyAtItsDeadlines) {
    ManualDispatch dispatch;
    const auto timer = dispatch.makeTimerSource(dispatch.makeQueue("queue"));
    int ticks = 0;
    timer->setEventHandler([&] { ++ticks; });
    timer->schedule(10s, 5s, 0ns);
    timer->resume();
    dispatch.advance(10s - 1ns);
    EXPECT_EQ(ticks, 0);
    dispatch.advance(1ns);
    EXPECT_EQ(ticks, 1);
    dispatch.advance(20s);
    EXPECT_EQ(ticks, 5);
}

TEST(ManualDispatch, TicksMissedWhileSuspendedArriveAsOneAndTheBeatGoesOn) {
    ManualDispatch dispatch;
    const auto timer = dispatch.makeTimerSource(dispatch.makeQueue("queue"));
    int ticks = 0;
    timer->setEventHandler([&] { ++ticks; });
    timer->schedule(1s, 1s, 0ns);
    dispatch.advance(3500ms);
    timer->resume();
    dispatch.advance(499ms);
    EXPECT_EQ(ticks, 1);
    dispatch.advance(1ms);
    EXPECT_EQ(ticks, 2);
}

TEST(ManualDispatch, TimersTickInTheOrderOfTheirDeadlinesAndThenOfTheirSetting) {
    ManualDispatch dispatch;
    std::vector<int> order;
    std::vector<std::unique_ptr<DispatchSourceTimer>> timers;
    for (const int place : {3, 1, 2, 1}) {
        timers.push_back(dispatch.makeTimerSource(dispatch.makeQueue("queue")));
        const int number = place * 10 + static_cast<int>(timers.size());
        timers.back()->setEventHandler([&, number] { order.push_back(number); });
        timers.back()->schedule(std::chrono::seconds(place), std::nullopt, 0ns);
        timers.back()->resume();
    }
    dispatch.advance(3s);
    EXPECT_THAT(order, ElementsAre(12, 14, 23, 31));
}

TEST(ManualDispatch, TheClockTellsTheTimeOfTheTick) {
    const auto clock = std::make_shared<ManualClock>();
    ManualDispatch dispatch({.realQueues = false, .clock = clock});
    const auto timer = dispatch.makeTimerSource(dispatch.makeQueue("queue"));
    const auto start = clock->now();
    std::vector<Date> ticks;
    timer->setEventHandler([&] { ticks.push_back(clock->now()); });
    timer->schedule(1min, 1min, 0ns);
    timer->resume();
    dispatch.advance(150s);
    EXPECT_THAT(ticks, ElementsAre(start + 1min, start + 2min));
    EXPECT_EQ(clock->now(), start + 150s);
}

TEST(ManualDispatch, BlocksRunInTheOrderInWhichTheyWereGivenWhateverTheirQueues) {
    ManualDispatch dispatch;
    const auto one = dispatch.makeQueue("one");
    const auto two = dispatch.makeQueue("two");
    std::vector<int> ran;
    one->async([&] {
        ran.push_back(1);
        two->async([&] { ran.push_back(4); });
    });
    two->async([&] { ran.push_back(2); });
    one->async([&] { ran.push_back(3); });
    dispatch.drain();
    EXPECT_THAT(ran, ElementsAre(1, 2, 3, 4));
}

TEST(ManualDispatch, ATimerThatIsSetByATickFiresInTheSameAdvance) {
    ManualDispatch dispatch;
    const auto queue = dispatch.makeQueue("queue");
    const auto first = dispatch.makeTimerSource(queue);
    const auto second = dispatch.makeTimerSource(queue);
    bool fired = false;
    second->setEventHandler([&] { fired = true; });
    first->setEventHandler([&] {
        second->schedule(1s, std::nullopt, 0ns);
        second->resume();
    });
    first->schedule(1s, std::nullopt, 0ns);
    first->resume();
    dispatch.advance(2s);
    EXPECT_TRUE(fired);
}

TEST(ManualDispatch, ACancelledTimerIsArmedNoMore) {
    ManualDispatch dispatch;
    const auto timer = dispatch.makeTimerSource(dispatch.makeQueue("queue"));
    timer->schedule(1s, 1s, 0ns);
    EXPECT_EQ(dispatch.armedTimers(), 1U);
    timer->cancel();
    EXPECT_EQ(dispatch.armedTimers(), 0U);
    timer->schedule(1s, 1s, 0ns);
    EXPECT_EQ(dispatch.armedTimers(), 0U);
}

TEST(ManualDispatch, ATimerCancelledWhileItsTickIsOnItsWayIsArmedNoMore) {
    ManualDispatch dispatch;
    const auto timer = dispatch.makeTimerSource(dispatch.makeQueue("queue"));
    timer->schedule(1s, 1s, 0ns);
    dispatch.advance(1s);
    timer->resume();
    EXPECT_EQ(dispatch.waitingBlocks(), 1U);
    timer->cancel();
    dispatch.drain();
    EXPECT_EQ(dispatch.armedTimers(), 0U);
}

} // namespace

} // namespace tallyfoot::testing
