#include "Crash/CrashHost.h"
#include "Crash/CrashPoints.h"
#include "Crash/Faults.h"

#include "Tallyfoot/Crash/ExceptionHandler.h"
#include "Tallyfoot/Facade/TallyfootImplementation.h"
#include "Tallyfoot/Platform/CrashHooks.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/UserDefaults.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <exception>
#include <filesystem>
#include <new>
#include <string_view>
#include <thread>

namespace tallyfoot::testing {
namespace {

// TALLYFOOT_CRASH_STEP=1 tries each point, not only some.
long setting(const char* name, long standard) {
    const char* value = std::getenv(name);
    return value == nullptr ? standard : std::strtol(value, nullptr, 10);
}

// What the two processes share.
struct Shared {
    std::atomic<int> acknowledged;
    std::atomic<long> points;
};

Shared& makeShared() {
    void* memory = ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *new (memory) Shared();
}

// Cannot log, so that the record stays.
class Silent final : public CrashFacade {
public:
    void log(EventType, Attributes&) override { throw std::bad_alloc(); }
    bool isIgnored(std::string_view) const override { return false; }
    const DebugConsole& console() const override { return quiet_; }

private:
    std::atomic<bool> isOn_{false};
    DebugConsole quiet_{*defaultPlatformServices().console, isOn_};
};

class CrashPoint : public CrashTest {
protected:
    // Goes once through all that the library does on its caller's thread, a switch of the application and
    // an upload that fails included.
    void goThroughEverything(long point, std::string_view kind = {}) {
        ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
        setApplication();
        configure();
        Tallyfoot::setShowOutput(true);
        crashAtPoint(point, sendFault, kind);
        log();
        Tallyfoot::setPageParent("web");
        Tallyfoot::categoryCustomTitles({{"UISlider", "Slide"}});
        defaultPlatformServices().userDefaults->setReal("number", 1.5);
        defaultPlatformServices().userDefaults->setObject("text", PropertyList{std::string("value")});
        Tallyfoot::setEnvironment(std::make_shared<Environment>());
        configure({"UISlider"});
        Tallyfoot::setAppInfo(std::make_shared<ApplicationInfo>("Bank", "id", "area", "area-id"));
        Tallyfoot::log("of another application", {});
        setApplication();
        log();
        Tallyfoot::Implementation::shared().pipeline.context()->recorder->triggerUpload();
        log();
        shared_.points = pointsSince();
        ::_exit(0);
    }

    // Another thread may have come to fewer points this time.
    static bool isOver(const ::testing::AssertionResult& ended) {
        return !ended && std::string_view(ended.message()).starts_with("it ended with 0\n");
    }

    void log() {
        Tallyfoot::log("a", {}, {{"k", "v"}});
        ++shared_.acknowledged;
    }

    Shared& shared_ = makeShared();
};

TEST_F(CrashPoint, WhateverIsHeldOrUnderWayTheCrashIsKept) {
    ASSERT_TRUE(endsWith(0, [this] { goThroughEverything(0); }));
    const long points = shared_.points;
    ASSERT_GT(points, 100);
    const long step = setting("TALLYFOOT_CRASH_STEP", 1 + points / 60);
    long crashes = 0;
    auto longest = std::chrono::steady_clock::duration::zero();
    for (long point = 1; point < points; point += step) {
        std::filesystem::remove_all(root_ / "data");
        std::filesystem::remove_all(root_ / "config");
        shared_.acknowledged = 0;
        const auto begin = std::chrono::steady_clock::now();
        const auto ended = endsWith(SIGSEGV, [&] { goThroughEverything(point); });
        longest = std::max(longest, std::chrono::steady_clock::now() - begin);
        if (isOver(ended)) continue;
        ASSERT_TRUE(ended) << "at point " << point;
        ++crashes;
        EXPECT_EQ(storedReason(), "SIGSEGV") << "at point " << point;
    }
    RecordProperty("points", static_cast<int>(points));
    RecordProperty("crashes", static_cast<int>(crashes));
    std::printf("%ld points, %ld crashes, the longest end took %lld ms\n", points, crashes,
                static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(longest).count()));
    EXPECT_GT(crashes, points / step / 2);
}

// The first of each kind and one in the middle, so that none is missed by chance.
class CrashInside : public CrashPoint, public ::testing::WithParamInterface<const char*> {};

TEST_P(CrashInside, IsKept) {
    ASSERT_TRUE(endsWith(0, [this] { goThroughEverything(0, GetParam()); }));
    const long points = shared_.points;
    ASSERT_GT(points, 0);
    for (const long point : {1L, std::max(1L, points / 2)}) {
        std::filesystem::remove_all(root_ / "data");
        std::filesystem::remove_all(root_ / "config");
        const auto ended = endsWith(SIGSEGV, [&] { goThroughEverything(point, GetParam()); });
        if (point > 1 && isOver(ended)) continue;
        ASSERT_TRUE(ended) << "at point " << point;
        EXPECT_EQ(storedReason(), "SIGSEGV") << "at point " << point;
    }
}

INSTANTIATE_TEST_SUITE_P(Calls, CrashInside,
                         ::testing::Values("lock", "open", "write", "console", "close", "rename", "unlink", "mkdir"),
                         [](const auto& parameter) { return std::string(parameter.param); });

// --- While a former crash is told, through all of the library -----------------------------------

class CrashWhileReporting : public CrashPoint {
protected:
    // A former process has crashed; the next one ends in the middle of its start.
    void prepareFormerCrash() {
        std::filesystem::remove_all(root_ / "data");
        std::filesystem::remove_all(root_ / "config");
        ASSERT_TRUE(crashes(SIGFPE, [] { ::raise(SIGFPE); }));
    }

    void startAndEndAt(long point, void (*end)()) {
        setApplication();
        crashAtPoint(point, end);
        configure();
        shared_.points = pointsSince();
        crashAtPoint(0, end);
        ::_exit(0);
    }

    long pointsOfAStart() {
        prepareFormerCrash();
        EXPECT_TRUE(endsWith(0, [this] { startAndEndAt(0, sendFault); }));
        EXPECT_GT(shared_.points, 30);
        return shared_.points;
    }

    int told(const std::string& reason) const {
        int count = 0;
        for (const auto& record : crashRecords()) count += record["crashreason"] == reason ? 1 : 0;
        return count;
    }
};

TEST_F(CrashWhileReporting, TheNewOneIsToldOnceAndTheFormerOneIsToldOrReplaced) {
    const long points = pointsOfAStart();
    int former = 0;
    int replaced = 0;
    for (long point = 1; point < points; point += setting("TALLYFOOT_CRASH_STEP", 1 + points / 60)) {
        prepareFormerCrash();
        const auto ended = endsWith(SIGSEGV, [&] { startAndEndAt(point, sendFault); });
        if (isOver(ended)) continue;
        const bool isHeard(ended); // before the hooks are there, nobody hears it
        const auto unheard = "it ended with " + std::to_string(128 + SIGSEGV);
        ASSERT_TRUE(isHeard || std::string_view(ended.message()).starts_with(unheard)) << "at point " << point;
        ASSERT_TRUE(endsWith(0, [this] { start(); }));
        EXPECT_EQ(told("SIGSEGV"), isHeard ? 1 : 0) << "at point " << point;
        EXPECT_LE(told("SIGFPE"), 1) << "at point " << point;
        EXPECT_GE(told("SIGFPE"), isHeard ? 0 : 1) << "at point " << point;
        if (isHeard) ++(told("SIGFPE") == 1 ? former : replaced);
    }
    EXPECT_GT(former, 0);   // some came after it was logged,
    EXPECT_GT(replaced, 0); // and some before
}

TEST_F(CrashWhileReporting, AKillLosesNoneAndTellsItTwiceOnlyUnderItsIdentifier) {
    const long points = pointsOfAStart();
    int once = 0;
    int twice = 0;
    for (long point = 1; point < points; point += setting("TALLYFOOT_CRASH_STEP", 1 + points / 60)) {
        prepareFormerCrash();
        const auto ended = endsWith(128 + SIGKILL, [&] { startAndEndAt(point, killAtOnce); });
        if (isOver(ended)) continue;
        ASSERT_TRUE(ended) << "at point " << point;
        ASSERT_TRUE(endsWith(0, [this] { start(); }));
        const auto records = crashRecords();
        ASSERT_FALSE(records.empty()) << "at point " << point;
        ASSERT_LE(records.size(), 2U) << "at point " << point;
        EXPECT_EQ(records.front()["evtId"], records.back()["evtId"]) << "at point " << point;
        ++(records.size() == 1 ? once : twice);
    }
    std::printf("told once %d times, twice %d times\n", once, twice);
    std::fflush(stdout); // a child of a later round would write it again
    EXPECT_GT(once, 0);
}

// --- The watchdog ---------------------------------------------------------------------------------

TEST_F(CrashTest, AReasonThatDoesNotComeIsToldThoughTwoThreadsHearTheAlarmAtOnce) {
    struct Endless : std::exception {
        const char* what() const noexcept override {
            for (;;) ::pause();
        }
    };
    ASSERT_TRUE(crashes(128 + SIGABRT, [] {
        slowDownTheClock();
        std::thread([] { throw Endless(); }).join();
    }));
    EXPECT_EQ(storedReason(), "");
}

// --- A fault inside the hook itself -------------------------------------------------------------

TEST_F(CrashWhileReporting, AFaultInsideTheHookEndsTheProcessAtOnceWithAWholeRecord) {
    constexpr long inTheHook = 8; // more than it has calls
    int former = 0;
    int later = 0;
    for (long point = 1; point <= inTheHook; ++point) {
        prepareFormerCrash();
        const auto ended = endsWith(128 + SIGSEGV, [&] {
            // The former record is left untold.
            CrashContext context(*defaultPlatformServices().crashHooks);
            Silent facade;
            ExceptionHandler handler(defaultPlatformServices(), context, facade);
            handler.install();
            crashAtPoint(point, writeToForbiddenMemory);
            ::raise(SIGABRT);
        });
        if (!ended) { // it had fewer calls
            EXPECT_EQ(storedReason(), "SIGABRT");
            break;
        }
        const auto reason = storedReason();
        EXPECT_TRUE(reason == "SIGFPE" || reason == "SIGABRT") << reason;
        ++(reason == "SIGFPE" ? former : later);
    }
    EXPECT_GT(former, 0);
    EXPECT_GT(later, 0);
}

} // namespace
} // namespace tallyfoot::testing
