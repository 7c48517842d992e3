#include "PlatformData/PosixURLSessionTest.h"
#include "PlatformData/SilentServer.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <fstream>
#include <future>
#include <string>
#include <utility>

// What a session takes of its process: connections, file descriptors, threads and memory.
namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;
using Ending = ScriptedServer::Ending;
using Reading = ScriptedServer::Reading;

// --- Connections ----------------------------------------------------------------------------------

TEST_F(PosixURLSessionTest, TasksShareAConnection) {
    for (int task = 0; task < 5; ++task) expectBody(host.fetch(post(server.url())), "{}");
    EXPECT_EQ(server.connectionCount(), 1u);
}

TEST_F(PosixURLSessionTest, AConnectionThatWasClosedMeanwhileIsReplaced) {
    server.script({ScriptedServer::response("one"), Ending::closes, {}, {}});
    expectBody(host.fetch(post(server.url())), "one");
    server.waitForDisconnections(1);
    expectBody(host.fetch(post(server.url())), "{}");
    EXPECT_EQ(server.requestCount(), 2u);
}

TEST_F(PosixURLSessionTest, ARequestOnAConnectionThatProvesDeadIsSentAnew) {
    server.script({ScriptedServer::response("one"), {}, {}, {}});
    server.script({"", Ending::closes, {}, {}});
    expectBody(host.fetch(post(server.url(), "first")), "one");
    expectBody(host.fetch(post(server.url(), "second")), "{}");
    EXPECT_EQ(server.requestCount(), 3u);
    EXPECT_EQ(server.request(1).body, "second");
    EXPECT_EQ(server.request(2).body, "second");
    EXPECT_EQ(server.connectionCount(), 2u);
}

TEST_F(PosixURLSessionTest, SixTasksRunAtATime) {
    for (int task = 0; task < 6; ++task) server.script({"", Ending::fallsSilent, {}, {}});
    std::atomic<int> failures{0};
    for (int task = 0; task < 6; ++task) {
        auto request = post(server.url());
        request.timeout = 1s;
        host.session().dataTask(std::move(request), [&](const Result<std::string>& result) { failures += !result; });
    }
    // The seventh would be answered at once.
    auto request = post(server.url());
    request.timeout = 1s;
    std::promise<int> failuresBefore;
    host.session().dataTask(std::move(request), [&](const Result<std::string>& result) {
        EXPECT_TRUE(result) << result.error().description;
        failuresBefore.set_value(failures);
    });
    auto future = failuresBefore.get_future();
    ASSERT_EQ(future.wait_for(30s), std::future_status::ready);
    EXPECT_GE(future.get(), 1);
    EXPECT_EQ(server.requestCount(), 7u);
}

// --- File descriptors -----------------------------------------------------------------------------

bool isConnectedTo(int port, int file) {
    sockaddr_in peer{};
    socklen_t length = sizeof peer;
    return ::getpeername(file, reinterpret_cast<sockaddr*>(&peer), &length) == 0 && peer.sin_family == AF_INET
           && ntohs(peer.sin_port) == port;
}

// One of the pair by which the session's thread is woken.
bool isLocalSocket(int file) {
    sockaddr_storage own{};
    socklen_t length = sizeof own;
    return ::getsockname(file, reinterpret_cast<sockaddr*>(&own), &length) == 0 && own.ss_family == AF_UNIX;
}

bool leadsNowhere(int file) {
    struct stat is {};
    struct stat nowhere {};
    return ::fstat(file, &is) == 0 && ::stat("/dev/null", &nowhere) == 0 && S_ISCHR(is.st_mode)
           && is.st_rdev == nowhere.st_rdev;
}

// The standard streams of a host that has closed them, for as long as this lives.
class ClosedStreams {
public:
    ClosedStreams() {
        for (std::size_t place = 0; place < streams.size(); ++place) kept_[place] = ::dup(streams[place]);
        for (const int stream : streams) ::close(stream);
    }
    ~ClosedStreams() {
        for (std::size_t place = 0; place < streams.size(); ++place) {
            ::dup2(kept_[place], streams[place]);
            ::close(kept_[place]);
        }
    }
    ClosedStreams(const ClosedStreams&) = delete;
    ClosedStreams& operator=(const ClosedStreams&) = delete;

    template <class Test>
    std::ptrdiff_t count(Test test) const {
        return std::count_if(streams.begin(), streams.end(), test);
    }

private:
    static constexpr std::array streams{STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    std::array<int, streams.size()> kept_{};
};

TEST(PosixURLSession, NothingOfItIsAStandardStreamThatTheHostHasClosed) {
    SilentServer server;
    const ClosedStreams closed;
    SessionHost host;
    auto answer = host.start(post(server.url()));
    {
        const auto connection = server.accept();
        EXPECT_TRUE(connection);
        EXPECT_EQ(
            closed.count([&](int stream) { return isConnectedTo(server.port(), stream) || isLocalSocket(stream); }), 0);
    }
    server.close();
    expectError(SessionHost::wait(answer));
}

TEST(PosixURLSession, NorIsWhatItWaitsWithForTheAddressOfAHost) {
    const auto url = "http://" + std::string(64, 'x') + "/"; // no name: nobody is asked for it
    std::ptrdiff_t ours = 0;
    for (int round = 0; round < 10; ++round) {
        const ClosedStreams closed;
        SessionHost host;
        auto answer = host.start(post(url));
        while (answer.wait_for(0s) != std::future_status::ready)
            ours += closed.count([](int stream) { // the system's own, for a moment, are closed in other programs
                return isLocalSocket(stream) && (::fcntl(stream, F_GETFD) & FD_CLOEXEC) == 0;
            });
        expectError(answer.get(), "resolve");
    }
    EXPECT_EQ(ours, 0);
}

// Whatever was put there and closed again would be the host's own stream, had that come in between.
TEST(PosixURLSession, WhatItPutsThereInsteadStaysThere) {
    const ClosedStreams closed;
    SessionHost host;
    expectError(host.fetch(post("http://" + std::string(64, 'x') + "/")), "resolve");
    EXPECT_EQ(closed.count(leadsNowhere), 3);
}

TEST_F(PosixURLSessionTest, ItsConnectionIsClosedInAProgramThatTheHostBecomes) {
    expectBody(host.fetch(post(server.url())), "{}");
    int connections = 0;
    for (int file = 0; file < 1024; ++file) {
        if (!isConnectedTo(server.port(), file)) continue;
        ++connections;
        EXPECT_EQ(::fcntl(file, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    }
    EXPECT_EQ(connections, 1);
}

// --- Threads and memory ---------------------------------------------------------------------------

TEST_F(PosixURLSessionTest, ASessionWithoutTasksCostsNoThread) {
    const auto threadCount = [] {
        std::ifstream status("/proc/self/status");
        for (std::string line; std::getline(status, line);)
            if (line.starts_with("Threads:")) return std::stoi(line.substr(8));
        return -1;
    };
    const auto before = threadCount();
    const PosixURLSession another;
    EXPECT_EQ(threadCount(), before);
}

std::size_t statusKilobytes(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(name)) return std::stoul(line.substr(name.size()));
    return 0;
}

TEST_F(PosixURLSessionTest, ABodyIsNotCopied) {
    constexpr std::size_t bodySize = 64u << 20;
    expectBody(host.fetch(post(server.url())), "{}"); // whatever the first request sets up
    server.script({ScriptedServer::response("done"), {}, Reading::dropsBody, {}});
    auto request = post(server.url(), std::string(bodySize, 'x'));
    const auto before = statusKilobytes("VmHWM:");
    ASSERT_GT(before, bodySize / 1024);
    expectBody(host.fetch(std::move(request)), "done");
    EXPECT_LT(statusKilobytes("VmHWM:"), before + bodySize / 1024 / 4);
}

} // namespace
} // namespace tallyfoot::testing
