#include "Tallyfoot/Platform/Posix/ExitGate.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <thread>

namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// Comes after the gate's own handler. In a child only: ends it with 0 when its end was not held up.
Clock::time_point childBegan;
void judgeChild() {
    static const auto parent = ::getpid();
    if (::getpid() != parent) ::_exit(Clock::now() - childBegan < 200ms ? 0 : 1);
}

TEST(ExitGate, AForkedChildEndsWithoutWaitingForThreadsThatItDoesNotHave) {
    judgeChild(); // notes who the parent is
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

} // namespace
} // namespace tallyfoot::testing
