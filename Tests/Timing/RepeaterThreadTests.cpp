#include "Support/ManualDispatch.h"
#include "Support/Occurrences.h"
#include "Support/RecordingConsole.h"
#include "Timing/SpyDispatch.h"

#include "Tallyfoot/Platform/Posix/PosixDispatch.h"
#include "Tallyfoot/Recording/Timing/Debouncer.h"

#include <gmock/gmock.h>

#include <atomic>
#include <random>
#include <thread>
#include <vector>

// Repeaters and debouncers on real timers and from several threads.
namespace tallyfoot {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using State = Repeater::State;
using Interval = Repeater::Interval;
constexpr auto noTolerance = DispatchTimeInterval::nanoseconds(0);

void onThreads(int count, const std::function<void(unsigned)>& block) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) threads.emplace_back(block, static_cast<unsigned>(i));
    for (auto& thread : threads) thread.join();
}

TEST(RepeaterOnThreads, TicksOnItsQueueAndFinishes) {
    PosixDispatch dispatch;
    const auto queue = dispatch.makeQueue("ticks");
    testing::Occurrences finished;
    std::atomic<int> ticks = 0;
    std::atomic<bool> isOnQueue = true;
    auto repeater = Repeater::make(dispatch, Interval::milliseconds(10), Repeater::Mode::finite(3), noTolerance, queue,
                                   [&](Repeater&) {
                                       ++ticks;
                                       if (!queue->isCurrent()) isOnQueue = false;
                                   });
    repeater->setOnStateChanged([&](Repeater&, State state) {
        if (state == State::finished) finished.add();
    });
    repeater->start();
    ASSERT_TRUE(finished.waitFor(1));
    EXPECT_EQ(ticks, 3);
    EXPECT_TRUE(isOnQueue);
    repeater->start();
    ASSERT_TRUE(finished.waitFor(2));
    EXPECT_EQ(ticks, 6);
}

TEST(RepeaterOnThreads, TheListenerHearsOfTheStartBeforeTheFirstTick) {
    PosixDispatch dispatch;
    for (int round = 0; round < 200; ++round) {
        const auto queue = dispatch.makeQueue("ticks");
        Exclusive<std::vector<State>> states;
        testing::Occurrences finished;
        auto repeater =
            Repeater::make(dispatch, Interval::nanoseconds(0), Repeater::Mode::once(), noTolerance, queue, nullptr);
        repeater->setOnStateChanged([&](Repeater&, State state) {
            states.modify([&](auto& all) { all.push_back(state); });
            if (state == State::finished) finished.add();
        });
        repeater->start();
        ASSERT_TRUE(finished.waitFor(1));
        ASSERT_THAT(states.copy(), ElementsAre(State::running, State::executing, State::finished));
        queue->sync([] {}); // the handler has ended
    }
}

TEST(RepeaterOnThreads, MayBeReleasedInsideItsTickWithItsQueue) {
    PosixDispatch dispatch;
    testing::Occurrences released;
    struct Witness {
        explicit Witness(testing::Occurrences& told) : occurrences(told) {}
        ~Witness() { occurrences.add(); }
        testing::Occurrences& occurrences;
    };
    Exclusive<std::shared_ptr<Repeater>> owner;
    auto repeater =
        Repeater::make(dispatch, Interval::milliseconds(10), Repeater::Mode::infinite(), noTolerance, nullptr,
                       [&owner, witness = std::make_shared<Witness>(released)](Repeater&) { owner.exchange(nullptr); });
    owner.exchange(repeater);
    repeater->start();
    repeater.reset();
    ASSERT_TRUE(released.waitFor(1));
}

void callSomething(Repeater& repeater, unsigned choice) {
    switch (choice % 8) {
    case 0: repeater.pause(); break;
    case 1: repeater.reset(std::nullopt, false); break;
    case 2: repeater.reset(Interval::microseconds(choice % 100), true); break;
    case 3: repeater.remove(repeater.observe([](Repeater&) {})); break;
    case 4: repeater.setOnStateChanged([](Repeater& sender, State) { sender.state(); }); break;
    default: repeater.start();
    }
}

TEST(RepeaterOnThreads, CallsOfSeveralThreadsAndItsOwnTicksKeepItsTimersInOrder) {
    PosixDispatch real;
    testing::SpyDispatch dispatch(real); // fails when a timer is resumed or suspended once too often
    for (const auto mode : {Repeater::Mode::infinite(), Repeater::Mode::once(), Repeater::Mode::finite(2)}) {
        const auto queue = dispatch.makeQueue("ticks");
        std::atomic<unsigned> choice = 0;
        testing::Occurrences ticks;
        auto repeater = Repeater::make(dispatch, Interval::microseconds(50), mode, noTolerance, queue,
                                       [&](Repeater& sender) { callSomething(sender, ++choice); });
        onThreads(4, [&](unsigned seed) {
            std::minstd_rand random(seed + 1);
            for (int i = 0; i < 400; ++i) {
                const auto next = static_cast<unsigned>(random());
                if (next % 9 == 0) {
                    repeater->fire(next % 2 == 0);
                } else {
                    callSomething(*repeater, next);
                }
            }
        });
        repeater->removeAllObservers(true);
        queue->sync([] {}); // the tick under way has made its call
        repeater->observe([&](Repeater&) { ticks.add(); });
        repeater->reset(Interval::milliseconds(1), true); // after all that it still works
        EXPECT_TRUE(ticks.waitFor(1));
        repeater->pause();
        repeater.reset();
        queue->sync([] {});
    }
    for (std::size_t i = 0; i < dispatch.timersMade(); ++i) EXPECT_TRUE(dispatch.timer(i).isReleased);
}

TEST(RepeaterOnThreads, MayBeReleasedWhileItTicks) {
    PosixDispatch dispatch;
    const auto queue = dispatch.makeQueue("ticks");
    std::atomic<int> ticks = 0;
    for (int round = 0; round < 300; ++round) {
        auto repeater =
            Repeater::every(dispatch, Interval::microseconds(20), std::nullopt, queue, [&](Repeater&) { ++ticks; });
        if (round % 2 == 0) std::this_thread::yield();
        repeater->pause();
        repeater->start();
    }
    queue->sync([] {});
    const int last = ticks;
    queue->sync([] {});
    EXPECT_EQ(ticks, last);
}

TEST(DebouncerOnThreads, FirstCallsOfSeveralThreadsFireOnce) {
    testing::ManualDispatch real;
    testing::SpyDispatch dispatch(real);
    testing::RecordingConsole console;
    const std::atomic<bool> showOutput{true};
    for (int round = 0; round < 50; ++round) {
        int fires = 0;
        Debouncer debouncer(dispatch, DebugConsole(console, showOutput), Interval::seconds(10), [&] { ++fires; });
        onThreads(4, [&](unsigned) { debouncer.call(); });
        real.advance(9s);
        EXPECT_EQ(fires, 0);
        real.advance(60s);
        EXPECT_EQ(fires, 1);
    }
}

TEST(DebouncerOnThreads, FiresOnARealTimerAndMayBeReleasedThere) {
    PosixDispatch dispatch;
    testing::RecordingConsole console;
    const std::atomic<bool> showOutput{true};
    testing::Occurrences fired;
    auto debouncer =
        std::make_unique<Debouncer>(dispatch, DebugConsole(console, showOutput), Interval::milliseconds(10), nullptr);
    debouncer->setCallback([&] {
        fired.add();
        if (fired.count() < 3) {
            debouncer->call();
        } else {
            debouncer.reset();
            fired.add();
        }
    });
    debouncer->call();
    EXPECT_TRUE(fired.waitFor(4));
}

} // namespace
} // namespace tallyfoot
