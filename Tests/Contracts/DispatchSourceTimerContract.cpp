#include "Contracts/DispatchHosts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

namespace tallyfoot::testing {

namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

constexpr std::nullopt_t once = std::nullopt;

class DispatchSourceTimerContract : public ::testing::TestWithParam<Implementation<DispatchHost>> {
protected:
    std::unique_ptr<DispatchSourceTimer> makeTimer() { return host_->dispatch().makeTimerSource(queue_); }

    // Lets the duration pass, and everything that was due within it happen.
    void pass(nanoseconds duration) {
        Occurrences passed;
        const auto timer = makeTimer();
        timer->setEventHandler([&] { passed.add(); });
        timer->schedule(duration, once, 0ns);
        timer->resume();
        ASSERT_TRUE(host_->waitFor(passed, 1));
        queue_->sync([] {});
    }

    std::shared_ptr<DispatchHost> host_ = GetParam().make();
    std::shared_ptr<DispatchQueue> queue_ = host_->dispatch().makeQueue("timers");
    Occurrences ticks_;
    std::unique_ptr<DispatchSourceTimer> timer_ = makeTimer();

    void SetUp() override {
        timer_->setEventHandler([this] { ticks_.add(); });
    }
    void TearDown() override {
        queue_->sync([this] { timer_.reset(); }); // no handler uses the test any more
    }
};

TEST_P(DispatchSourceTimerContract, IsBornSuspended) {
    timer_->schedule(1ms, once, 0ns);
    pass(5ms);
    EXPECT_EQ(ticks_.count(), 0);
}

TEST_P(DispatchSourceTimerContract, CallsItsHandlerOnItsQueue) {
    std::atomic<bool> isCurrent{false};
    timer_->setEventHandler([&] {
        isCurrent = queue_->isCurrent();
        ticks_.add();
    });
    timer_->schedule(1ms, once, 0ns);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 1));
    EXPECT_TRUE(isCurrent);
}

TEST_P(DispatchSourceTimerContract, WithoutAnIntervalItTicksOnce) {
    timer_->schedule(1ms, once, 0ns);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 1));
    pass(5ms);
    EXPECT_EQ(ticks_.count(), 1);
}

TEST_P(DispatchSourceTimerContract, WithAnIntervalItTicksOn) {
    timer_->schedule(1ms, 1ms, 0ns);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 5));
}

TEST_P(DispatchSourceTimerContract, ANegativeDeadlineIsNow) {
    timer_->schedule(-1h, once, 0ns);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 1));
}

TEST_P(DispatchSourceTimerContract, AZeroIntervalCountsAsOneNanosecond) {
    timer_->setEventHandler([this] {
        ticks_.add();
        if (ticks_.count() == 3) timer_->cancel();
    });
    timer_->schedule(0ns, 0ns, 0ns);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 3));
}

TEST_P(DispatchSourceTimerContract, AnEndlessDeadlineNeverComes) {
    timer_->schedule(nanoseconds::max(), 1ms, 0ns);
    timer_->resume();
    pass(5ms);
    EXPECT_EQ(ticks_.count(), 0);
}

TEST_P(DispatchSourceTimerContract, AnEndlessIntervalTicksOnce) {
    timer_->schedule(1ms, nanoseconds::max(), 0ns);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 1));
    pass(5ms);
    EXPECT_EQ(ticks_.count(), 1);
}

TEST_P(DispatchSourceTimerContract, AnUnscheduledTimerDoesNotTick) {
    timer_->resume();
    pass(2ms);
    EXPECT_EQ(ticks_.count(), 0);
}

TEST_P(DispatchSourceTimerContract, SuspensionsNest) {
    timer_->suspend();
    timer_->schedule(1ms, once, 0ns);
    timer_->resume();
    pass(3ms);
    EXPECT_EQ(ticks_.count(), 0);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 1));
}

TEST_P(DispatchSourceTimerContract, ATickDueWhileSuspendedComesOnceWithTheResume) {
    timer_->schedule(1ms, once, 0ns);
    pass(5ms);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 1));
    timer_->suspend();
    timer_->resume();
    pass(3ms);
    EXPECT_EQ(ticks_.count(), 1);
}

TEST_P(DispatchSourceTimerContract, ASuspendedTimerResumedInTimeTicksAtItsDeadline) {
    timer_->schedule(20ms, once, 0ns);
    timer_->resume();
    timer_->suspend();
    timer_->resume();
    EXPECT_EQ(ticks_.count(), 0);
    EXPECT_TRUE(host_->waitFor(ticks_, 1));
}

TEST_P(DispatchSourceTimerContract, ResumingOnceTooOftenIsFatal) {
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_DEATH(
        {
            timer_->resume();
            timer_->resume();
        },
        "fatal error: a timer was resumed more often than it was suspended");
}

TEST_P(DispatchSourceTimerContract, ACancelledTimerTicksNoMore) {
    timer_->schedule(1ms, 1ms, 0ns);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 2));
    int atCancel = 0;
    queue_->sync([&] { // nothing of the timer's runs meanwhile
        timer_->cancel();
        atCancel = ticks_.count();
    });
    pass(5ms);
    EXPECT_EQ(ticks_.count(), atCancel);
}

TEST_P(DispatchSourceTimerContract, ACancelledTimerCanBeResumedAndScheduledInVain) {
    timer_->schedule(1ms, once, 0ns);
    timer_->cancel();
    timer_->resume();
    timer_->schedule(1ms, 1ms, 0ns);
    timer_->setEventHandler([this] { ticks_.add(); });
    pass(5ms);
    EXPECT_EQ(ticks_.count(), 0);
}

TEST_P(DispatchSourceTimerContract, ATickDueWhileSuspendedIsLostToACancel) {
    timer_->schedule(1ms, once, 0ns);
    pass(3ms);
    timer_->cancel();
    timer_->resume();
    pass(3ms);
    EXPECT_EQ(ticks_.count(), 0);
}

TEST_P(DispatchSourceTimerContract, CanBeCancelledFromItsOwnHandler) {
    timer_->setEventHandler([this] {
        timer_->cancel();
        ticks_.add();
    });
    timer_->schedule(1ms, 1ms, 0ns);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 1));
    pass(5ms);
    EXPECT_EQ(ticks_.count(), 1);
}

TEST_P(DispatchSourceTimerContract, CanBeReleasedFromItsOwnHandler) {
    const auto held = std::make_shared<std::atomic<int>>(0);
    timer_->setEventHandler([this, held] {
        timer_.reset();
        ++*held; // the handler's own belongings are still there
        ticks_.add();
    });
    timer_->schedule(1ms, 1ms, 0ns);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 1));
    pass(5ms);
    EXPECT_EQ(*held, 1);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_P(DispatchSourceTimerContract, CanBeSuspendedFromItsOwnHandler) {
    timer_->setEventHandler([this] {
        timer_->suspend();
        ticks_.add();
    });
    timer_->schedule(1ms, 1ms, 0ns);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 1));
    pass(5ms);
    EXPECT_EQ(ticks_.count(), 1);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 2));
}

TEST_P(DispatchSourceTimerContract, CanBeScheduledAgainFromItsOwnHandler) {
    timer_->setEventHandler([this] {
        ticks_.add();
        if (ticks_.count() < 3) timer_->schedule(1ms, once, 0ns);
    });
    timer_->schedule(1ms, once, 0ns);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 3));
    pass(5ms);
    EXPECT_EQ(ticks_.count(), 3);
}

TEST_P(DispatchSourceTimerContract, ANewScheduleTakesTheFormersPlace) {
    timer_->schedule(1ms, 1ms, 0ns);
    timer_->schedule(nanoseconds::max(), once, 0ns);
    timer_->resume();
    pass(5ms);
    EXPECT_EQ(ticks_.count(), 0);
}

TEST_P(DispatchSourceTimerContract, ANewScheduleForgetsADueTick) {
    timer_->schedule(1ms, once, 0ns);
    pass(3ms);
    timer_->schedule(nanoseconds::max(), once, 0ns);
    timer_->resume();
    pass(3ms);
    EXPECT_EQ(ticks_.count(), 0);
}

// A tick that is handed to the queue inside a turn stays on its way until the turn ends.

TEST_P(DispatchSourceTimerContract, ANewScheduleForgetsATickOnItsWay) {
    timer_->schedule(1ms, once, 0ns);
    pass(3ms);
    queue_->sync([&] {
        timer_->resume();
        timer_->schedule(nanoseconds::max(), once, 0ns);
    });
    pass(3ms);
    EXPECT_EQ(ticks_.count(), 0);
}

TEST_P(DispatchSourceTimerContract, ASuspensionHoldsATickOnItsWay) {
    timer_->schedule(1ms, once, 0ns);
    pass(3ms);
    queue_->sync([&] {
        timer_->resume();
        timer_->suspend();
    });
    pass(3ms);
    EXPECT_EQ(ticks_.count(), 0);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 1));
}

TEST_P(DispatchSourceTimerContract, ATickOnItsWayComesOnceHoweverOftenItIsResumed) {
    timer_->schedule(1ms, once, 0ns);
    pass(3ms);
    queue_->sync([&] {
        timer_->resume();
        timer_->suspend();
        timer_->resume();
    });
    pass(3ms);
    EXPECT_EQ(ticks_.count(), 1);
}

TEST_P(DispatchSourceTimerContract, ANewHandlerTakesTheFormersPlace) {
    Occurrences others;
    timer_->setEventHandler([&] { others.add(); });
    timer_->schedule(1ms, once, 0ns);
    timer_->resume();
    EXPECT_TRUE(host_->waitFor(others, 1));
    EXPECT_EQ(ticks_.count(), 0);
}

TEST_P(DispatchSourceTimerContract, AClearedHandlerIsNotCalled) {
    timer_->schedule(1ms, 1ms, 0ns);
    timer_->setEventHandler(nullptr);
    timer_->resume();
    pass(5ms);
    EXPECT_EQ(ticks_.count(), 0);
}

TEST_P(DispatchSourceTimerContract, ACancelledOrClearedHandlerIsReleased) {
    const auto held = std::make_shared<int>(1);
    timer_->setEventHandler([held] {});
    timer_->setEventHandler(nullptr);
    EXPECT_EQ(held.use_count(), 1);
    timer_->setEventHandler([held] {});
    timer_->cancel();
    EXPECT_EQ(held.use_count(), 1);
    timer_->setEventHandler([held] {}); // of no use any more
    EXPECT_EQ(held.use_count(), 1);
}

TEST_P(DispatchSourceTimerContract, KeepsItsQueue) {
    auto queue = host_->dispatch().makeQueue("kept");
    const auto timer = host_->dispatch().makeTimerSource(queue);
    const std::weak_ptr<DispatchQueue> watched = queue;
    queue.reset();
    timer->setEventHandler([&] {
        if (!watched.expired()) ticks_.add();
    });
    timer->schedule(1ms, once, 0ns);
    timer->resume();
    EXPECT_TRUE(host_->waitFor(ticks_, 1));
}

TEST_P(DispatchSourceTimerContract, AReleasedTimerLetsGoOfItsQueueAtOnce) {
    auto queue = host_->dispatch().makeQueue("kept");
    auto timer = host_->dispatch().makeTimerSource(queue);
    timer->schedule(1h, 1h, 0ns);
    timer->resume();
    const std::weak_ptr<DispatchQueue> watched = queue;
    queue.reset();
    timer.reset();
    EXPECT_TRUE(watched.expired());
}

INSTANTIATE_TEST_SUITE_P(All, DispatchSourceTimerContract,
                         ::testing::Values(posixDispatch(), manualDispatch(), manualDispatchWithRealQueues()),
                         nameOfImplementation);

} // namespace

} // namespace tallyfoot::testing
