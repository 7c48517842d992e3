#include "Timing/RepeaterTest.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

// Who is told of a repeater's ticks and states, and what may be done from inside such a call.
namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using State = Repeater::State;
using Mode = Repeater::Mode;
using Interval = Repeater::Interval;

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
} // namespace tallyfoot::testing
