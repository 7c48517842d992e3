#include "Crash/CrashHost.h"
#include "Crash/CrashPoints.h"

#include "Tallyfoot/Facade/TallyfootImplementation.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/UserDefaults.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <new>
#include <string_view>

namespace tallyfoot::testing {
namespace {

using ::testing::SizeIs;

// What the two processes share.
struct Shared {
    std::atomic<int> acknowledged;
    std::atomic<long> points;
};

Shared& makeShared() {
    void* memory = ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *new (memory) Shared();
}

class CrashPoint : public CrashTest {
protected:
    // Goes once through all that the library does on its caller's thread, a switch of the application and
    // an upload that fails included.
    void goThroughEverything(long point) {
        ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
        setApplication();
        configure();
        Tallyfoot::setShowOutput(true);
        crashAtPoint(point);
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

    void log() {
        Tallyfoot::log("a", {}, {{"k", "v"}});
        ++shared_.acknowledged;
    }

    Shared& shared_ = makeShared();
};

// TALLYFOOT_CRASH_STEP=1 tries each point, not only some.
long setting(const char* name, long standard) {
    const char* value = std::getenv(name);
    return value == nullptr ? standard : std::strtol(value, nullptr, 10);
}

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
        // Another thread may have come to fewer points this time.
        if (!ended && std::string_view(ended.message()).starts_with("it ended with 0\n")) continue;
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

} // namespace
} // namespace tallyfoot::testing
