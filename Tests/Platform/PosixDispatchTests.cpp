#include "Support/Occurrences.h"
#include "Support/OrdinaryUser.h"

#include "Tallyfoot/Platform/Posix/PosixDispatch.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>

#include <array>
#include <atomic>
#include <barrier>
#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace tallyfoot::testing {

namespace {

using namespace std::chrono_literals;

bool isBlockedHere(int signal) {
    sigset_t blocked;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    return ::sigismember(&blocked, signal) == 1;
}

TEST(PosixDispatchQueue, AsyncBlocksRunOnAThreadOfItsOwnNamedAfterTheLabel) {
    const auto queue = PosixDispatch().makeQueue("EventRecorder, the one queue");
    std::array<char, 16> name{};
    std::thread::id ranOn;
    queue->async([&] {
        ::pthread_getname_np(::pthread_self(), name.data(), name.size());
        ranOn = std::this_thread::get_id();
    });
    queue->sync([] {});
    EXPECT_NE(ranOn, std::this_thread::get_id());
    EXPECT_STREQ(name.data(), "EventRecorder, ");
}

TEST(PosixDispatchQueue, NoSignalOfTheHostsReachesItsThreadButACrashDoes) {
    const auto queue = PosixDispatch().makeQueue("queue");
    queue->async([] {
        for (const int signal : {SIGINT, SIGTERM, SIGUSR1, SIGALRM, SIGCHLD, SIGPIPE, SIGPROF})
            EXPECT_TRUE(isBlockedHere(signal)) << signal;
        for (const int signal : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV})
            EXPECT_FALSE(isBlockedHere(signal)) << signal;
    });
    queue->sync([] {});
    EXPECT_FALSE(isBlockedHere(SIGTERM)) << "the caller's mask is as it was";
}

void busyFor(std::chrono::nanoseconds duration) {
    for (const auto end = std::chrono::steady_clock::now() + duration; std::chrono::steady_clock::now() < end;) {
    }
}

// One thread gives the turn back only to take it again at once. Whoever waits would have to be faster
// than that, unless the turn is handed over.
TEST(PosixDispatchQueue, WhoeverHasWaitedForAMillisecondIsHandedTheTurn) {
    const auto queue = PosixDispatch().makeQueue("queue");
    std::atomic<bool> isDone{false};
    std::atomic<int> turns{0};
    std::thread greedy([&] {
        while (!isDone)
            queue->sync([&] {
                ++turns;
                busyFor(3ms);
            });
    });
    while (turns == 0) std::this_thread::yield();
    const int before = turns;
    int after = 0;
    queue->sync([&] { after = turns; });
    isDone = true;
    greedy.join();
    EXPECT_LT(after - before, 100);
}

TEST(PosixDispatchQueue, ACallGetsThroughWhileManyOthersHammer) {
    const auto queue = PosixDispatch().makeQueue("queue");
    std::atomic<bool> isDone{false};
    std::vector<std::thread> others;
    for (int index = 0; index < 8; ++index)
        others.emplace_back([&] {
            while (!isDone) queue->sync([] {});
        });
    auto through = std::async(std::launch::async, [&] {
        for (int call = 0; call < 50; ++call) queue->sync([] {});
    });
    const auto status = through.wait_for(60s);
    isDone = true;
    for (auto& other : others) other.join();
    EXPECT_EQ(status, std::future_status::ready);
}

TEST(PosixDispatchQueue, ContendedTurnsWithBlocksOfEveryLengthExclude) {
    const auto queue = PosixDispatch().makeQueue("queue");
    long sum = 0; // guarded by nothing but the turn
    std::vector<std::thread> threads;
    for (int index = 0; index < 6; ++index)
        threads.emplace_back([&, index] {
            for (int round = 0; round < 60; ++round)
                queue->sync([&] {
                    busyFor(std::chrono::microseconds(index * 97 + (round % 7 == 0 ? 1500 : 0)));
                    ++sum;
                });
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(sum, 360);
}

TEST(PosixDispatchQueue, WithoutAnyThreadToGiveTheNextCallerDoesTheWork) {
    TemporaryFolder folder;
    EXPECT_TRUE(asOrdinaryUser(folder, [] {
        const rlimit none{0, 0};
        if (::setrlimit(RLIMIT_NPROC, &none) != 0) return false;
        auto queue = PosixDispatch().makeQueue("queue");
        std::string order;
        queue->async([&] { order += 'a'; });
        queue->sync([&] { order += 'b'; });
        queue->async([&] { order += 'c'; });
        queue.reset();
        return order == "abc";
    }));
}

TEST(PosixDispatchQueue, ItsThreadMayComeWhileACallerDoesItsWork) {
    TemporaryFolder folder;
    EXPECT_TRUE(asOrdinaryUser(folder, [] {
        constexpr int blocksEach = 100;
        rlimit former{};
        if (::getrlimit(RLIMIT_NPROC, &former) != 0) return false;
        const rlimit none{0, former.rlim_max};
        std::barrier both(2);
        std::shared_ptr<DispatchQueue> queue;
        int blocks = 0;
        std::thread other([&] {
            for (;;) {
                both.arrive_and_wait(); // in the queue's first block, or at the end
                if (!queue) return;
                queue->async([&] { ++blocks; });
                both.arrive_and_wait();
            }
        });
        bool ranOnce = true;
        for (int round = 0; round < 500; ++round) {
            queue = PosixDispatch().makeQueue("queue");
            blocks = 0;
            if (::setrlimit(RLIMIT_NPROC, &none) != 0) return false;
            queue->async([&] {
                (void)::setrlimit(RLIMIT_NPROC, &former);
                both.arrive_and_wait();
            });
            for (int block = 0; block < blocksEach; ++block) queue->async([&] { ++blocks; });
            queue->sync([] {});
            both.arrive_and_wait();
            queue->sync([&] { ranOnce = ranOnce && blocks == blocksEach + 1; });
        }
        queue.reset();
        both.arrive_and_wait();
        other.join();
        return ranOnce;
    }));
}

TEST(PosixDispatchSourceTimer, TicksAlsoWhereItsQueueFindsNoThread) {
    TemporaryFolder folder;
    EXPECT_TRUE(asOrdinaryUser(folder, [] {
        const rlimit none{0, 0};
        PosixDispatch dispatch;
        const std::array queues{dispatch.makeQueue("former"), dispatch.makeQueue("later")};
        Occurrences ticks;
        std::vector<std::unique_ptr<DispatchSourceTimer>> timers;
        for (const auto& queue : queues) {
            timers.push_back(dispatch.makeTimerSource(queue));
            timers.back()->setEventHandler([&] { ticks.add(); });
            timers.back()->schedule(0ns, std::nullopt, 0ns);
            timers.back()->resume();
            if (!ticks.waitFor(static_cast<int>(timers.size())) || ::setrlimit(RLIMIT_NPROC, &none) != 0) return false;
        }
        for (const auto& queue : queues) queue->sync([] {});
        return true;
    }));
}

TEST(PosixDispatchSourceTimer, TimersSetWhileThereIsNoThreadToGiveTickOnceThereIsOne) {
    TemporaryFolder folder;
    EXPECT_TRUE(asOrdinaryUser(folder, [] {
        rlimit former{};
        if (::getrlimit(RLIMIT_NPROC, &former) != 0) return false;
        PosixDispatch dispatch;
        const auto queue = dispatch.makeQueue("queue");
        Occurrences ticks;
        std::vector<std::unique_ptr<DispatchSourceTimer>> timers;
        for (const rlim_t threads : {rlim_t{0}, former.rlim_max}) {
            const rlimit limit{threads, former.rlim_max};
            if (::setrlimit(RLIMIT_NPROC, &limit) != 0) return false;
            timers.push_back(dispatch.makeTimerSource(queue));
            timers.back()->setEventHandler([&] { ticks.add(); });
            timers.back()->schedule(0ns, std::nullopt, 0ns);
            timers.back()->resume();
        }
        const bool bothTicked = ticks.waitFor(2);
        queue->sync([] {});
        return bothTicked;
    }));
}

TEST(PosixDispatchSourceTimer, NeverTicksBeforeItsDeadline) {
    PosixDispatch dispatch;
    const auto queue = dispatch.makeQueue("queue");
    for (const auto deadline : {1ms, 7ms, 30ms}) {
        const auto timer = dispatch.makeTimerSource(queue);
        std::promise<std::chrono::steady_clock::time_point> ticked;
        timer->setEventHandler([&] { ticked.set_value(std::chrono::steady_clock::now()); });
        timer->resume();
        const auto start = std::chrono::steady_clock::now();
        timer->schedule(deadline, std::nullopt, 0ns);
        auto future = ticked.get_future();
        ASSERT_EQ(future.wait_for(60s), std::future_status::ready);
        EXPECT_GE(future.get(), start + deadline);
    }
}

TEST(PosixDispatchSourceTimer, TicksMissedByABusyQueueArriveAsOne) {
    PosixDispatch dispatch;
    const auto queue = dispatch.makeQueue("queue");
    const auto timer = dispatch.makeTimerSource(queue);
    Occurrences ticks;
    timer->setEventHandler([&] { ticks.add(); });
    timer->resume();
    std::chrono::steady_clock::time_point free;
    queue->sync([&] {
        timer->schedule(0ns, 10ms, 0ns);
        busyFor(100ms);
        free = std::chrono::steady_clock::now();
    });
    ASSERT_TRUE(ticks.waitFor(5)); // one for all that were missed, four on the beat
    EXPECT_GE(std::chrono::steady_clock::now(), free + 30ms);
    timer->cancel();
    queue->sync([] {});
}

TEST(PosixDispatchSourceTimer, NoHandlerStartsAfterACancelInsideTheTurn) {
    PosixDispatch dispatch;
    const auto queue = dispatch.makeQueue("queue");
    const auto other = dispatch.makeQueue("other");
    const auto timer = dispatch.makeTimerSource(queue);
    const auto reference = dispatch.makeTimerSource(other);
    Occurrences ticks;
    Occurrences due;
    timer->setEventHandler([&] { ticks.add(); });
    reference->setEventHandler([&] { due.add(); });
    queue->sync([&] {
        timer->schedule(0ns, std::nullopt, 0ns);
        timer->resume();
        reference->schedule(5ms, std::nullopt, 0ns);
        reference->resume();
        ASSERT_TRUE(due.waitFor(1)); // the tick has been handed to the queue by now
        timer->cancel();
    });
    queue->sync([] {});
    EXPECT_EQ(ticks.count(), 0);
}

TEST(PosixDispatchSourceTimer, AOneShotSuspendedAndResumedAllTheTimeTicksExactlyOnce) {
    PosixDispatch dispatch;
    const auto queue = dispatch.makeQueue("queue");
    for (int round = 0; round < 100; ++round) {
        Occurrences ticks;
        const auto timer = dispatch.makeTimerSource(queue);
        timer->setEventHandler([&] { ticks.add(); });
        timer->schedule(std::chrono::microseconds(round % 7 * 50), std::nullopt, 0ns);
        timer->resume();
        std::vector<std::thread> threads;
        for (int index = 0; index < 2; ++index)
            threads.emplace_back([&] {
                for (int call = 0; call < 50; ++call) {
                    timer->suspend();
                    timer->resume();
                }
            });
        for (auto& thread : threads) thread.join();
        ASSERT_TRUE(ticks.waitFor(1));
        queue->sync([] {});
        ASSERT_EQ(ticks.count(), 1);
    }
}

// Every call from every side at once: nothing may hang, crash or race.
TEST(PosixDispatchSourceTimer, StandsCallsFromSeveralThreads) {
    PosixDispatch dispatch;
    const auto queue = dispatch.makeQueue("queue");
    Occurrences ticks;
    for (int round = 0; round < 20; ++round) {
        const std::shared_ptr<DispatchSourceTimer> timer = dispatch.makeTimerSource(queue);
        timer->setEventHandler([&] { ticks.add(); });
        timer->schedule(0ns, 1us, 0ns);
        timer->resume();
        std::vector<std::thread> threads;
        threads.emplace_back([timer] {
            for (int call = 0; call < 50; ++call) {
                timer->suspend();
                timer->resume();
            }
        });
        threads.emplace_back([timer] {
            for (int call = 0; call < 50; ++call) timer->schedule(0ns, std::chrono::nanoseconds(call), 0ns);
        });
        threads.emplace_back([timer, &ticks] {
            for (int call = 0; call < 50; ++call) timer->setEventHandler([&ticks] { ticks.add(); });
            timer->cancel();
        });
        for (auto& thread : threads) thread.join();
    }
    queue->sync([] {});
    const int after = ticks.count();
    queue->sync([] {});
    EXPECT_EQ(ticks.count(), after);
}

} // namespace

} // namespace tallyfoot::testing
