#include "Crash/CrashHost.h"
#include "Crash/Faults.h"
#include "Crash/Places.h"

#include "Tallyfoot/Platform/Posix/UserDefaultsFolder.h"

#include <pthread.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <thread>

// What goes on around a crash: the host's handlers, its exit handlers, other threads and forked processes.
namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

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

} // namespace
} // namespace tallyfoot::testing
