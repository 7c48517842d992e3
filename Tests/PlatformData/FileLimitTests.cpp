#include "PlatformData/SessionHost.h"
#include "PlatformData/SilentServer.h"
#include "Support/ResourceLimit.h"
#include "Support/ScriptedServer.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <utility>

namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;

TEST(PosixURLSession, ATaskThatFindsNoFileFreeFailsAndLaterOnesWakeTheSession) {
    ScriptedServer server;
    SessionHost host;
    const int firstFree = ::dup(STDIN_FILENO);
    ASSERT_GE(firstFree, 0);
    ::close(firstFree);
    {
        const ResourceLimit limit(RLIMIT_NOFILE, static_cast<rlim_t>(firstFree));
        expectError(host.fetch(post(server.url())));
    }
    // One may come before the session sleeps, but hardly so many.
    for (int task = 0; task < 50 && !HasFailure(); ++task) expectBody(host.fetch(post(server.url())), "{}");
}

TEST(PosixURLSession, WhereItMayHaveNoFilesAnyMoreItWaitsAllTheSame) {
    SilentServer silent;
    SessionHost host;
    auto request = post(silent.url());
    request.timeout = 1s;
    auto answer = host.start(std::move(request));
    const auto connection = silent.accept();
    char received = 0;
    ASSERT_EQ(::recv(connection.number(), &received, 1, 0), 1); // it is connected and waits for the answer
    const ResourceLimit limit(RLIMIT_NOFILE, 0);                // the system refuses to watch more files than that
    const auto before = std::clock();
    expectError(SessionHost::wait(answer), "silent");
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 8) << "of a second's work";
}

} // namespace
} // namespace tallyfoot::testing
