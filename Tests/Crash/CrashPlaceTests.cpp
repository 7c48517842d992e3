#include "Crash/CrashHost.h"
#include "Crash/Faults.h"
#include "Crash/Places.h"

#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/URLSession.h"

#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <thread>
#include <utility>

// Each signal on each thread that a process with the library has, and the stack that it is heard on.
namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

struct Case {
    Place place;
    Fault fault;
    std::string kind;
};

std::string name(const Case& one) { return one.kind + one.fault.name + "On" + one.place.name; }
void PrintTo(const Case& one, std::ostream* stream) { *stream << name(one); }

std::vector<Case> cases() {
    std::vector<Case> all;
    for (const auto& place : places()) {
        for (const auto& fault : raisedFaults()) all.push_back({place, fault, "Raised"});
        // The library's own threads hold SIGPIPE back: a connection that breaks is no crash.
        for (const auto& fault : realFaults())
            if (fault.signal != SIGPIPE || place.name == "MainThread" || place.name == "Worker")
                all.push_back({place, fault, "Real"});
    }
    std::erase_if(all, [](const Case& one) {
        return one.fault.signal == SIGPIPE && one.place.name != "MainThread" && one.place.name != "Worker";
    });
    return all;
}

class CrashOn : public CrashTest, public ::testing::WithParamInterface<Case> {};

TEST_P(CrashOn, IsToldAtTheNextStartOnce) {
    const auto& [place, fault, kind] = GetParam();
    ASSERT_TRUE(crashes(fault.signal, [&place = place, &fault = fault] { place.run(fault.happen); }));
    EXPECT_EQ(storedReason(), fault.name);
    EXPECT_THAT(told(), ElementsAre(fault.name));
    EXPECT_EQ(storedReason(), "nothing");
    EXPECT_THAT(told(), SizeIs(1)); // not again
}

INSTANTIATE_TEST_SUITE_P(Signals, CrashOn, ::testing::ValuesIn(cases()),
                         [](const auto& parameter) { return name(parameter.param); });

class BrokenPipeOn : public CrashTest, public ::testing::WithParamInterface<Place> {};

TEST_P(BrokenPipeOn, ThreadsOfTheLibraryIsNoCrash) {
    ASSERT_TRUE(crashes(0, [] {
        GetParam().run([] {
            realFaults().back().happen();
            raisedFaults().back().happen();
            ::_exit(0);
        });
    }));
    EXPECT_THAT(told(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Signals, BrokenPipeOn, ::testing::Values(places()[2], places()[3], places()[4]),
                         [](const auto& parameter) { return parameter.param.name; });

// Takes one connection, reads a little of what comes and resets it. Gives the port that it listens on.
int startServerThatHangsUp() {
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    if (::bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listener, 8) != 0) return 0;
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    std::thread([listener] {
        for (;;) {
            const int connection = ::accept(listener, nullptr, nullptr);
            std::array<char, 1000> beginning{};
            (void)::recv(connection, beginning.data(), beginning.size(), MSG_WAITALL);
            const linger reset{1, 0};
            ::setsockopt(connection, SOL_SOCKET, SO_LINGER, &reset, sizeof(reset));
            ::close(connection);
        }
    }).detach();
    return ntohs(address.sin_port);
}

TEST_F(CrashTest, AnUploadWhoseServerHangsUpIsNoCrash) {
    ASSERT_TRUE(crashes(77, [] {
        URLRequest request;
        request.url = "http://127.0.0.1:" + std::to_string(startServerThatHangsUp()) + "/";
        request.method = "POST";
        request.body = {std::string(std::size_t{32} << 20U, 'x')}; // more than any buffer on the way takes
        const auto session = defaultPlatformServices().makeURLSession();
        session->dataTask(std::move(request), [](const Result<std::string>& reply) { ::_exit(reply ? 1 : 77); });
        waitForTheEnd();
    }));
    EXPECT_EQ(storedReason(), "nothing");
}

class StackOverflowOn : public CrashTest, public ::testing::WithParamInterface<Place> {};

TEST_P(StackOverflowOn, IsTold) {
    ASSERT_TRUE(crashes(SIGSEGV, [] { GetParam().run(useUpTheStack); }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

INSTANTIATE_TEST_SUITE_P(Threads, StackOverflowOn, ::testing::ValuesIn(places()),
                         [](const auto& parameter) { return parameter.param.name; });

// --- Stacks for the hooks ------------------------------------------------------------------------

#if !TALLYFOOT_SANITIZED // a sanitizer gives its threads such stacks, too, and needs room
// Of the size, and whether the library let it be.
bool isKept(std::size_t size) {
    static std::vector<char> room(size);
    stack_t own{};
    own.ss_sp = room.data();
    own.ss_size = size;
    ::sigaltstack(&own, nullptr);
    Tallyfoot::log("a", {});
    stack_t current{};
    ::sigaltstack(nullptr, &current);
    return current.ss_sp == own.ss_sp;
}

TEST_F(CrashTest, AnAlternateStackOfTheHostsOwnIsKeptAndUsed) {
    ASSERT_TRUE(crashes(
        SIGSEGV, [] { std::thread([] { isKept(std::size_t{64} << 10U) ? useUpTheStack() : ::_exit(1); }).join(); }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, AnAlternateStackThatIsTooSmallIsReplaced) {
    ASSERT_TRUE(crashes(
        SIGSEGV, [] { std::thread([] { isKept(std::size_t{8} << 10U) ? ::_exit(1) : useUpTheStack(); }).join(); }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, AlternateStacksGoWithTheirThreads) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        const rlimit room{std::size_t{1} << 30U, std::size_t{1} << 30U};
        ::setrlimit(RLIMIT_AS, &room);
        for (int thread = 0; thread < 5000; ++thread) std::thread([] { Tallyfoot::log("a", {}); }).join();
        onWorker(useUpTheStack);
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}
#endif

} // namespace
} // namespace tallyfoot::testing
