#include "Crash/CrashHost.h"
#include "Crash/Faults.h"

#include "Tallyfoot/Facade/TallyfootImplementation.h"
#include "Tallyfoot/Platform/Dispatch.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/Posix/UserDefaultsFolder.h"
#include "Tallyfoot/Platform/URLSession.h"
#include "Tallyfoot/Platform/UserDefaults.h"
#include "Tallyfoot/Recording/Timing/Repeater.h"

#include <fcntl.h>
#include <malloc.h>
#include <netinet/in.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <iomanip>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace tallyfoot::testing {
namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

constexpr int aborted = 128 + SIGABRT;

void throwError(const char* reason) { throw std::logic_error(reason); }

[[noreturn]] void waitForTheEnd() {
    for (;;) ::pause();
}

// --- Where a crash happens ----------------------------------------------------------------------

struct Place {
    std::string name;
    std::function<void(const std::function<void()>&)> run; // returns only if the process goes on
};

void onWorker(const std::function<void()>& block) {
    std::thread([&] {
        Tallyfoot::log("worker", {});
        block();
    }).join();
}

void onRecorderQueue(const std::function<void()>& block) {
    const auto queue = defaultPlatformServices().dispatch->makeQueue("EventRecorder");
    queue->async(block);
    waitForTheEnd();
}

void onTimerQueue(const std::function<void()>& block) {
    const auto repeater = Repeater::once(*defaultPlatformServices().dispatch, RepeaterInterval::milliseconds(1),
                                         nullptr, [block](Repeater&) { block(); });
    waitForTheEnd();
}

void onUploadThread(const std::function<void()>& block) {
    const auto session = defaultPlatformServices().makeURLSession();
    URLRequest request;
    request.url = "http://127.0.0.1:1/"; // refused
    session->dataTask(std::move(request), [block](Result<std::string>) { block(); });
    waitForTheEnd();
}

std::vector<Place> places() {
    return {{"MainThread", [](const auto& block) { block(); }},
            {"Worker", onWorker},
            {"RecorderQueue", onRecorderQueue},
            {"TimerQueue", onTimerQueue},
            {"UploadThread", onUploadThread}};
}

struct Case {
    Place place;
    Fault fault;
    std::string kind;
};

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

INSTANTIATE_TEST_SUITE_P(Signals, CrashOn, ::testing::ValuesIn(cases()), [](const auto& parameter) {
    return parameter.param.kind + parameter.param.fault.name + "On" + parameter.param.place.name;
});

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

// --- What is told -------------------------------------------------------------------------------

TEST_F(CrashTest, TheEventCarriesTheMomentOfTheCrash) {
    const auto before = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    ASSERT_TRUE(crashes(SIGABRT, [] {
        Tallyfoot::Implementation::shared().pipeline.setCurrentScreenTitle("Basket");
        Tallyfoot::setPageParent("web");
        Tallyfoot::log("a", {});
        std::abort();
    }));
    Tallyfoot::setPageParent("other");
    ASSERT_THAT(told(), SizeIs(1));
    const auto record = crashRecords()[0];
    EXPECT_EQ(record.size(), 7U);
    EXPECT_EQ(record["evtType"], "crash");
    EXPECT_EQ(record["evtCategory"], "crash");
    EXPECT_EQ(record["crashreason"], "SIGABRT");
    EXPECT_EQ(record["pgName"], "Basket");
    EXPECT_EQ(record["pgPrnt"], "web");
    EXPECT_TRUE(std::regex_match(record["evtId"].get<std::string>(),
                                 std::regex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")));
    std::istringstream text(record["evtLclTimestamp"].get<std::string>());
    std::tm parts{};
    text >> std::get_time(&parts, "%Y-%m-%d %H:%M:%S +0000");
    ASSERT_TRUE(text);
    const auto time = std::chrono::system_clock::from_time_t(::timegm(&parts));
    EXPECT_GE(time, before);
    EXPECT_LE(time, std::chrono::system_clock::now());
}

TEST_F(CrashTest, WithoutPageParentAndScreenItIsTheAppItself) {
    ASSERT_TRUE(crashes(SIGABRT, [] {
        Tallyfoot::setPageParent("web");
        Tallyfoot::setPageParent(std::nullopt);
        std::abort();
    }));
    ASSERT_THAT(told(), SizeIs(1));
    EXPECT_EQ(crashRecords()[0]["pgPrnt"], "iOS");
    EXPECT_EQ(crashRecords()[0]["pgName"], "");
}

TEST_F(CrashTest, TextsOfAnyLengthAndCharacterAreKept) {
    const std::string parent = std::string(100'000, 'x') + "<&>\"'\n\t\xF0\x9F\x91\xA9";
    ASSERT_TRUE(crashes(SIGABRT, [&] {
        Tallyfoot::setPageParent(parent);
        std::abort();
    }));
    ASSERT_THAT(told(), SizeIs(1));
    EXPECT_EQ(crashRecords()[0]["pgPrnt"], parent);
}

TEST_F(CrashTest, ATextThatIsTooLongToBeReadBackKeepsItsBeginning) {
    ASSERT_TRUE(crashes(SIGABRT, [] {
        Tallyfoot::setPageParent(std::string(20'000'000, '&'));
        std::abort();
    }));
    ASSERT_THAT(told(), ElementsAre("SIGABRT"));
    const std::string kept = crashRecords()[0]["pgPrnt"];
    EXPECT_EQ(kept, std::string(kept.size(), '&'));
    EXPECT_GT(kept.size(), 400'000U);
}

TEST_F(CrashTest, EventsBeforeTheCrashAreThere) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        for (int event = 0; event < 100; ++event) Tallyfoot::log("a", {});
        writeToForbiddenMemory();
    }));
    EXPECT_THAT(records(), SizeIs(100));
}

TEST_F(CrashTest, TheConsoleSaysWhatIsAdded) {
    ASSERT_TRUE(crashes(SIGABRT, [] { std::abort(); }));
    setApplication();
    Tallyfoot::setShowOutput(true);
    ::testing::internal::CaptureStdout();
    Tallyfoot::configure(configuration_, {}, [] { return std::make_shared<Authentication>("user-1", "token-1"); });
    const auto output = ::testing::internal::GetCapturedStdout();
    Tallyfoot::setShowOutput(false);
    EXPECT_THAT(output, HasSubstr(R"("evtType: crash")"));
    EXPECT_THAT(
        output,
        HasSubstr(R"("Adding crash: [\"crashreason\": \"SIGABRT\", \"evtCategory\": \"crash\", \"evtId\": \")"));
    EXPECT_LT(output.find("evtType: crash"), output.find("Adding crash: "));
}

// --- One record ---------------------------------------------------------------------------------

TEST_F(CrashTest, OfTwoBeforeARestartTheSecondIsLeft) {
    ASSERT_TRUE(crashes(SIGSEGV, [] { ::raise(SIGSEGV); }));
    // The next start crashes before it could tell.
    ASSERT_TRUE(endsWith(SIGFPE, [] {
        CrashContext context(*defaultPlatformServices().crashHooks);
        struct Silent final : CrashFacade {
            void log(EventType, Attributes&) override { ::raise(SIGFPE); }
            bool isIgnored(std::string_view) const override { return false; }
            const DebugConsole& console() const override { return quiet; }
            std::atomic<bool> isOn{false};
            DebugConsole quiet{*defaultPlatformServices().console, isOn};
        } facade;
        ExceptionHandler handler(defaultPlatformServices(), context, facade);
        handler.install();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGFPE"));
}

TEST_F(CrashTest, ARecordThatWasLoggedButNotClearedIsToldAgainUnderItsIdentifier) {
    ASSERT_TRUE(crashes(SIGSEGV, [] { ::raise(SIGSEGV); }));
    const auto record = stored();
    ASSERT_TRUE(crashes(0, [] {}));
    defaultPlatformServices().userDefaults->setObject("crash", *record); // as if the process had died there
    EXPECT_THAT(told(), ElementsAre("SIGSEGV", "SIGSEGV"));
    EXPECT_EQ(crashRecords()[0]["evtId"], crashRecords()[1]["evtId"]);
}

TEST_F(CrashTest, IgnoredIsClearedWithoutAnEvent) {
    Tallyfoot::categoryCustomTitles({{"UISlider", "crash"}});
    setApplication();
    configure({"UISlider"});
    defaultPlatformServices().userDefaults->setObject(
        "crash", PropertyList{PropertyList::Dictionary{{"crashreason", PropertyList{std::string("SIGSEGV")}}}});
    configure({"UISlider"});
    EXPECT_THAT(crashRecords(), IsEmpty());
    EXPECT_EQ(storedReason(), "nothing");
}

// --- Exceptions ---------------------------------------------------------------------------------

TEST_F(CrashTest, AnExceptionIsToldWithItsReasonAndEndsTheProcessAsUsual) {
    ASSERT_TRUE(crashes(aborted, [] { throw std::runtime_error("no shelf"); }));
    EXPECT_THAT(
        message,
        HasSubstr("terminate called after throwing an instance of 'std::runtime_error'\n  what():  no shelf\n"));
    EXPECT_THAT(told(), ElementsAre("no shelf"));
}

TEST_F(CrashTest, AnExceptionWithoutAReasonIsToldWithAnEmptyOne) {
    ASSERT_TRUE(crashes(aborted, [] { throw 7; }));
    EXPECT_THAT(message, HasSubstr("terminate called after throwing an instance of 'int'"));
    EXPECT_THAT(told(), ElementsAre(""));
}

TEST_F(CrashTest, AnExceptionWhoseReasonIsNullIsToldWithAnEmptyOne) {
    struct Silent : std::exception {
        const char* what() const noexcept override { return nullptr; }
    };
    (void)crashes(aborted, [] { throw Silent(); });
    EXPECT_THAT(told(), ElementsAre(""));
}

TEST_F(CrashTest, TerminateWithoutAnExceptionIsToldWithAnEmptyReason) {
    ASSERT_TRUE(crashes(aborted, [] { std::terminate(); }));
    EXPECT_THAT(message, HasSubstr("terminate called without an active exception"));
    EXPECT_THAT(told(), ElementsAre(""));
}

TEST_F(CrashTest, AThreadThatIsNeitherJoinedNorDetachedIsToldWithAnEmptyReason) {
    ASSERT_TRUE(crashes(aborted, [] { const std::thread thread(waitForTheEnd); }));
    EXPECT_THAT(told(), ElementsAre(""));
}

TEST_F(CrashTest, AnExceptionOfAThread) {
    ASSERT_TRUE(crashes(aborted, [] { std::thread([] { throw std::logic_error("of a thread"); }).join(); }));
    EXPECT_THAT(told(), ElementsAre("of a thread"));
}

TEST_F(CrashTest, AnExceptionFromADestructor) {
    struct Throwing {
        ~Throwing() { throwError("of a destructor"); }
    };
    ASSERT_TRUE(crashes(aborted, [] { const Throwing throwing; }));
    EXPECT_THAT(told(), ElementsAre("of a destructor"));
}

TEST_F(CrashTest, AnExceptionFromAFunctionThatIsNoexcept) {
    ASSERT_TRUE(crashes(aborted, [] { []() noexcept { throwError("let through"); }(); }));
    EXPECT_THAT(told(), ElementsAre("let through"));
}

TEST_F(CrashTest, AnExceptionWhileAnotherUnwinds) {
    struct Throwing {
        ~Throwing() noexcept(false) { throw std::logic_error("the second"); }
    };
    ASSERT_TRUE(crashes(aborted, [] {
        try {
            const Throwing throwing;
            throw std::logic_error("the first");
        } catch (const std::logic_error&) {
        }
    }));
    EXPECT_THAT(told(), ElementsAre("the second"));
}

TEST_F(CrashTest, AnExceptionOfTheLibrarysOwnThreads) {
    ASSERT_TRUE(crashes(aborted, [] { onRecorderQueue([] { throw std::runtime_error("of a queue"); }); }));
    EXPECT_THAT(told(), ElementsAre("of a queue"));
}

TEST_F(CrashTest, AReasonThatThrowsEndsAllTheSame) {
    struct Perverse : std::exception {
        const char* what() const noexcept override {
            throwError("no reason");
            return "";
        }
    };
    ASSERT_TRUE(crashes(aborted, [] { throw Perverse(); }));
    EXPECT_THAT(told(), ElementsAre(""));
}

TEST_F(CrashTest, AReasonThatCrashesIsToldAsTheSignal) {
    struct Broken : std::exception {
        const char* what() const noexcept override {
            writeToForbiddenMemory();
            return "";
        }
    };
    ASSERT_TRUE(crashes(SIGSEGV, [] { throw Broken(); }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, AReasonThatDoesNotComeIsToldAsAnEmptyOne) {
    struct Endless : std::exception {
        const char* what() const noexcept override { waitForTheEnd(); }
    };
    ASSERT_TRUE(crashes(aborted, [] { throw Endless(); }));
    EXPECT_THAT(told(), ElementsAre(""));
}

// --- Around the crash ---------------------------------------------------------------------------

TEST_F(CrashTest, BeforeConfigureIsNotHeard) {
    ASSERT_TRUE(endsWith(128 + SIGSEGV, [] {
        setApplication();
        ::signal(SIGSEGV, SIG_DFL); // a sanitizer's own
        writeToForbiddenMemory();
    }));
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(CrashTest, WithoutAnApplicationIsHeard) {
    ASSERT_TRUE(endsWith(SIGSEGV, [this] {
        configure();
        writeToForbiddenMemory();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, OnAThreadThatTheLibraryNeverSaw) {
    ASSERT_TRUE(crashes(SIGSEGV, [] { std::thread(writeToForbiddenMemory).join(); }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, HandlersOfTheHostBeforeConfigureAreReplaced) {
    ASSERT_TRUE(endsWith(SIGSEGV, [this] {
        ::signal(SIGSEGV, [](int) { ::_exit(99); });
        start();
        writeToForbiddenMemory();
    }));
    ASSERT_TRUE(endsWith(aborted, [this] {
        std::set_terminate([] { ::_exit(99); });
        start();
        throw std::runtime_error("x");
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV", "x"));
}

TEST_F(CrashTest, HandlersOfTheHostAfterConfigureCountUntilTheNextOne) {
    ASSERT_TRUE(crashes(99, [] {
        ::signal(SIGSEGV, [](int) { ::_exit(99); });
        writeToForbiddenMemory();
    }));
    EXPECT_EQ(storedReason(), "nothing");
    ASSERT_TRUE(crashes(SIGSEGV, [this] {
        ::signal(SIGSEGV, [](int) { ::_exit(99); });
        configure();
        writeToForbiddenMemory();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

void (*ofTheLibrary)(int, siginfo_t*, void*) = nullptr;
void* nowhere = nullptr;

TEST_F(CrashTest, AHandlerOfTheHostThatPassesOnTheNumberAloneIsNoHindrance) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        struct sigaction former {};
        ::sigaction(SIGSEGV, nullptr, &former);
        ofTheLibrary = former.sa_sigaction;
        nowhere = ::mmap(nullptr, 65536, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        ::signal(SIGSEGV, [](int number) {
            (void)!::write(STDERR_FILENO, "handler\n", 8);
            ofTheLibrary(number, nullptr, nowhere); // what happens to be in the registers for it
        });
        std::atexit([] { (void)!::write(STDERR_FILENO, "exit handler\n", 13); });
        writeToForbiddenMemory();
    }));
    EXPECT_EQ(message, "handler\nexit handler\n");
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

// They come with the signal of the alarm that ends a process whose exit handlers hang.
TEST_F(CrashTest, TimersOfTheHostCutNothingOff) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        ::signal(SIGALRM, [](int) {});
        timer_t timer{};
        itimerspec time{};
        // As good as always; a sanitizer takes longer than this to hear each, and ends nothing in between.
        time.it_value.tv_nsec = time.it_interval.tv_nsec = TALLYFOOT_SANITIZED ? 1'000'000 : 10'000;
        ::timer_create(CLOCK_MONOTONIC, nullptr, &timer);
        ::timer_settime(timer, 0, &time, nullptr);
        std::atexit([] { (void)!::write(STDERR_FILENO, "exit handler\n", 13); });
        writeToForbiddenMemory();
    }));
    EXPECT_EQ(message, "exit handler\n");
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, OnAThreadThatIsToBeCancelled) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        std::thread([] {
            ::pthread_cancel(::pthread_self());
            writeToForbiddenMemory();
        }).join();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, AHostThatIgnoredBrokenPipesIsEndedByOne) {
    ASSERT_TRUE(endsWith(SIGPIPE, [this] {
        ::signal(SIGPIPE, SIG_IGN);
        start();
        realFaults().back().happen();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGPIPE"));
}

TEST_F(CrashTest, ExitHandlersRun) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        std::atexit([] { (void)!::write(STDERR_FILENO, "exit handler\n", 13); });
        writeToForbiddenMemory();
    }));
    EXPECT_EQ(message, "exit handler\n");
}

TEST_F(CrashTest, AnExitHandlerThatHangsDoesNotKeepTheProcess) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        std::atexit([] { waitForTheEnd(); });
        writeToForbiddenMemory();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, AnExitHandlerThatHangsDoesNotKeepAProcessWithAThreadThatTakesEverySignal) {
    ASSERT_TRUE(endsWith(SIGSEGV, [this] {
        sigset_t signals;
        ::sigfillset(&signals);
        ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        std::thread([signals] {
            for (int signal = 0;;) (void)::sigwait(&signals, &signal);
        }).detach();
        start();
        std::atexit([] { waitForTheEnd(); });
        std::thread([&signals] {
            ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
            writeToForbiddenMemory();
        }).join();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, AnExitHandlerThatHangsDeafToEverySignalDoesNotKeepTheProcess) {
    ASSERT_TRUE(crashes(128 + SIGKILL, [] {
        std::atexit([] {
            sigset_t signals;
            ::sigfillset(&signals);
            ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
            waitForTheEnd();
        });
        writeToForbiddenMemory();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

// It would go on to a program that an exit handler starts in place of the crashed one.
TEST_F(CrashTest, TheAlarmOfTheProcessIsLeftAlone) {
    ASSERT_TRUE(crashes(77, [] {
        std::atexit([] { ::_exit(::alarm(0) == 0 ? 77 : 1); });
        writeToForbiddenMemory();
    }));
    ASSERT_TRUE(crashes(77, [] {
        ::alarm(1000);
        std::atexit([] { ::_exit(::alarm(0) > 900 ? 77 : 1); });
        writeToForbiddenMemory();
    }));
}

TEST_F(CrashTest, AnExitHandlerThatCrashesLeavesTheFirstRecord) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        std::atexit([] { std::abort(); });
        writeToForbiddenMemory();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, AnExitHandlerThatThrowsLeavesTheFirstRecord) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        std::atexit([] { throw std::runtime_error("exit"); });
        writeToForbiddenMemory();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, InAnExitHandlerOfAProcessThatEndsIsTold) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        std::atexit([] { writeToForbiddenMemory(); });
        std::exit(0);
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, OnManyThreadsAtOnceLeavesOneWholeRecord) {
    constexpr int rounds = 20;
    for (int round = 0; round < rounds; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            start();
            std::atomic<int> ready = 0;
            std::vector<std::thread> threads;
            for (int thread = 0; thread < 8; ++thread)
                threads.emplace_back([&ready, thread] {
                    ++ready;
                    while (ready < 8) {
                    }
                    raisedFaults()[static_cast<std::size_t>(thread) % 6].happen();
                });
            for (auto& thread : threads) thread.join();
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFEXITED(status)) << WTERMSIG(status);
        const auto faults = raisedFaults();
        const auto first = std::find_if(faults.begin(), faults.end(),
                                        [&](const Fault& fault) { return fault.signal == WEXITSTATUS(status); });
        ASSERT_NE(first, faults.end()) << WEXITSTATUS(status);
        EXPECT_EQ(storedReason(), first->name) << "the status and the record are of the same crash";
    }
    EXPECT_THAT(told(), SizeIs(rounds)); // each start tells the crash before
}

TEST_F(CrashTest, AnExceptionAndAFaultAtOnceLeaveOneRecord) {
    for (int round = 0; round < 10; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            start();
            std::thread thrower([] { throw std::runtime_error("thrown"); });
            writeToForbiddenMemory();
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(storedReason(), WIFEXITED(status) ? "SIGSEGV" : "thrown");
    }
}

TEST_F(CrashTest, AProcessForkedAfterwardsIsNoneOfOurs) {
    ASSERT_TRUE(crashes(0, [] {
        for (const auto& fault : realFaults()) {
            const pid_t child = ::fork();
            if (child == 0) {
                fault.happen();
                ::_exit(0);
            }
            int status = 0;
            ::waitpid(child, &status, 0);
            if (!WIFSIGNALED(status) || WTERMSIG(status) != fault.signal) ::_exit(fault.signal);
        }
        ::_exit(0);
    }));
    EXPECT_EQ(storedReason(), "nothing");
}

TEST_F(CrashTest, AProcessForkedAfterwardsThatConfiguresWritesIntoAFileOfItsOwn) {
    ASSERT_TRUE(crashes(0, [this] {
        std::filesystem::path folder = *userDefaultsFolder(root_ / "bundle");
        // What the parent would write into cannot be written.
        std::ostringstream digits;
        digits << std::setw(10) << std::setfill('0') << ::getpid();
        std::filesystem::create_directory(folder / (".value." + digits.str() + ".new"));
        const pid_t child = ::fork();
        if (child == 0) {
            configure();
            writeToForbiddenMemory();
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        ::_exit(WIFEXITED(status) && WEXITSTATUS(status) == SIGSEGV ? 0 : 1);
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

// --- What the crash has left --------------------------------------------------------------------

TEST_F(CrashTest, WithItsStoreRemoved) {
    ASSERT_TRUE(crashes(SIGSEGV, [this] {
        for (const auto& bundle : std::filesystem::directory_iterator(root_ / "config/Tallyfoot"))
            std::filesystem::remove_all(bundle);
        writeToForbiddenMemory();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, WithAllThatItsStoreLiesInRemoved) {
    ASSERT_TRUE(crashes(SIGSEGV, [this] {
        std::filesystem::remove_all(root_ / "config");
        writeToForbiddenMemory();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

// Nothing can be kept then; the end stays what it is.
TEST_F(CrashTest, WithoutLeaveToWriteSoMuch) {
    const auto forbid = [] {
        const rlimit bytes{100, 100};
        ::setrlimit(RLIMIT_FSIZE, &bytes);
    };
    ASSERT_TRUE(crashes(SIGSEGV, [&] {
        forbid();
        writeToForbiddenMemory();
    }));
    ASSERT_TRUE(crashes(aborted, [&] {
        forbid();
        throw std::runtime_error("no shelf");
    }));
    EXPECT_EQ(storedReason(), "nothing");
}

TEST_F(CrashTest, WithItsStandardStreamsClosedKeepsTheTraceOutOfTheRecord) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::close(stream);
        std::thread([] {
            Tallyfoot::setShowOutput(true);
            for (;;) Tallyfoot::log("a", {});
        }).detach();
        writeToForbiddenMemory();
    }));
    EXPECT_EQ(storedReason(), "SIGSEGV");
}

#if !TALLYFOOT_SANITIZED // a sanitizer finds the faults first, and needs descriptors of its own
TEST_F(CrashTest, WithoutAnyFileDescriptorLeft) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        while (::open("/dev/null", O_RDONLY) >= 0) {
        }
        writeToForbiddenMemory();
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}

TEST_F(CrashTest, WithThreadsThatTakeEveryFileDescriptorThatComesFree) {
    if (::unshare(CLONE_FILES) != 0) GTEST_SKIP() << "no thread may have descriptors of its own here";
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(crashes(SIGSEGV, [] {
            const rlimit files{64, 64};
            ::setrlimit(RLIMIT_NOFILE, &files);
            for (int thread = 0; thread < 4; ++thread)
                std::thread([] {
                    for (;;) (void)::open("/dev/null", O_RDONLY);
                }).detach();
            while (::open("/dev/null", O_RDONLY) >= 0) {
            }
            writeToForbiddenMemory();
        }));
        EXPECT_EQ(storedReason(), "SIGSEGV");
        std::filesystem::remove_all(root_ / "config");
    }
}

TEST_F(CrashTest, AHeapThatIsFoundCorruptWhileItsLockIsHeldIsTold) {
    ASSERT_TRUE(crashes(SIGABRT, [] {
        constexpr std::size_t size = 100'000; // cut from the top of the heap, whose own size lies behind it
        auto* volatile block = static_cast<char*>(std::malloc(size));
        auto* volatile behind = block + ::malloc_usable_size(block);
        for (std::size_t byte = 0; byte < 8; ++byte) behind[byte] = static_cast<char>(0xFF);
        auto* volatile other = std::malloc(size);
        std::free(other);
    }));
    EXPECT_THAT(told(), ElementsAre("SIGABRT"));
}

TEST_F(CrashTest, AHeapThatIsFoundCorruptIsTold) {
    ASSERT_TRUE(crashes(SIGABRT, [] {
        char* volatile block = static_cast<char*>(std::malloc(24));
        std::free(block);
        std::free(block); // NOLINT: on purpose
    }));
    EXPECT_THAT(told(), ElementsAre("SIGABRT"));
}
#endif

} // namespace
} // namespace tallyfoot::testing
