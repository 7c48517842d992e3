#include "Tallyfoot/Platform/Posix/ExitGate.h"
#include "Tallyfoot/Platform/Posix/PosixURLSession.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>
#include <thread>
#include <utility>

namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// Comes after the gate's own handler. In a child only: ends it with 0 when its end was not held up.
Clock::time_point childBegan;
void judgeChild() {
    if (childBegan != Clock::time_point{}) ::_exit(Clock::now() - childBegan < 200ms ? 0 : 1);
}

TEST(ExitGate, AForkedChildEndsWithoutWaitingForThreadsThatItDoesNotHave) {
    std::atexit(judgeChild);
    ExitGate::install();
    std::promise<void> entered;
    std::promise<void> leave;
    std::jthread inside([&] {
        const ExitGate::Pass pass;
        entered.set_value();
        leave.get_future().wait();
    });
    entered.get_future().wait();
    bool wasQuick = false;
    for (int attempt = 0; attempt < 20 && !wasQuick; ++attempt) { // a busy machine may hold one up, too
        const pid_t child = ::fork();
        if (child == 0) {
            childBegan = Clock::now();
            std::exit(1);
        }
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        wasQuick = status == 0;
    }
    leave.set_value();
    EXPECT_TRUE(wasQuick);
}

std::atomic<bool> isEnding = false;
std::atomic<bool> isReleased = false;

void releaseSlowly(void*) {
    while (!isEnding) std::this_thread::yield();
    const auto began = Clock::now();
    while (Clock::now() - began < 100ms) std::this_thread::yield();
    isReleased = true;
}

// The status of a child that comes to its end while one of its threads does: 0 when the thread was waited for.
int endWithAnEndingThread() {
    const pid_t child = ::fork();
    if (child == 0) {
        std::atexit([] { ::_exit(isReleased ? 0 : 1); });
        ExitGate::install();
        std::atexit([] { isEnding = true; });
        std::promise<void> isAtItsEnd;
        std::thread([&] {
            pthread_key_t key{};
            ::pthread_key_create(&key, releaseSlowly);
            ::pthread_setspecific(key, &isReleased);
            ExitGate::passUntilThreadEnds();
            isAtItsEnd.set_value();
        }).detach();
        isAtItsEnd.get_future().wait();
        std::exit(1);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return status;
}

TEST(ExitGate, TheProcessEndsAfterWhatIsKeptForAThreadThatEnds) {
    bool wasWaitedFor = false;
    for (int attempt = 0; attempt < 20 && !wasWaitedFor;
         ++attempt) // a busy machine may hold the thread up for too long
        wasWaitedFor = endWithAnEndingThread() == 0;
    EXPECT_TRUE(wasWaitedFor);
}

TEST(ExitGate, TheProcessMayEndWhileItsFirstRequestBegins) {
    for (int round = 0; round < 100; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            static auto& session = *new PosixURLSession;
            URLRequest request;
            request.url = "https://127.0.0.1:1/";
            session.dataTask(std::move(request), [](const Result<std::string>&) {});
            for (int turn = 0; turn < round * 20; ++turn) std::this_thread::yield();
            std::exit(0);
        }
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0) << "in round " << round;
    }
}

} // namespace
} // namespace tallyfoot::testing
