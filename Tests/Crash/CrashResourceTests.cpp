#include "Crash/CrashHost.h"
#include "Crash/Faults.h"

#include <fcntl.h>
#include <malloc.h>
#include <sched.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>
#include <vector>

// Crashes of processes that lack what is needed to keep them: files, room, descriptors, a heap in order.
namespace tallyfoot::testing {

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TALLYFOOT_HAS_SANITIZERS_LOCK 1
void lockSanitizersMemory() __asm__("_ZN6__lsan13LockAllocatorEv");
#endif
#endif

namespace {

using ::testing::ElementsAre;

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

#if TALLYFOOT_HAS_SANITIZERS_LOCK
TEST_F(CrashTest, AFaultWhileTheLockOfTheSanitizersMemoryIsHeldIsTold) {
    ASSERT_TRUE(crashes(SIGSEGV, [] {
        sigevent event{};
        event.sigev_notify = SIGEV_SIGNAL;
        event.sigev_signo = SIGSEGV;
        itimerspec time{};
        time.it_value.tv_nsec = 100'000'000;
        timer_t timer{};
        ::timer_create(CLOCK_MONOTONIC, &event, &timer);
        ::timer_settime(timer, 0, &time, nullptr);
        std::vector<void*> blocks(100'000);
        lockSanitizersMemory();
        for (auto& block : blocks) block = std::malloc(sizeof(FILE)); // until what the thread has in store is used up
    }));
    EXPECT_THAT(told(), ElementsAre("SIGSEGV"));
}
#endif

} // namespace
} // namespace tallyfoot::testing
