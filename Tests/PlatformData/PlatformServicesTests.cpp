#include "Support/HostBundle.h"

#include "Tallyfoot/Platform/Bundle.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/Posix/UserDefaultsFolder.h"
#include "Tallyfoot/Platform/Screen.h"
#include "Tallyfoot/Platform/URLSession.h"
#include "Tallyfoot/Platform/UserDefaults.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

namespace tallyfoot::testing {
namespace {

TEST(PlatformServices, AreComplete) {
    const auto& services = defaultPlatformServices();
    EXPECT_TRUE(services.bundles);
    EXPECT_TRUE(services.clock);
    EXPECT_TRUE(services.console);
    EXPECT_TRUE(services.dispatch);
    EXPECT_TRUE(services.fileManager);
    EXPECT_TRUE(services.keyedArchiver);
    EXPECT_TRUE(services.networkInterfaces);
    EXPECT_TRUE(services.processInfo);
    EXPECT_TRUE(services.propertyLists);
    EXPECT_TRUE(services.random);
    EXPECT_TRUE(services.screen);
    EXPECT_TRUE(services.userDefaults);
    ASSERT_TRUE(services.makeURLSession);
    EXPECT_TRUE(services.makeURLSession());
}

TEST(PlatformServices, AreMadeOnceWhoeverAsks) {
    std::vector<const PlatformServices*> seen(8);
    std::vector<std::thread> threads;
    for (auto& one : seen) threads.emplace_back([&one] { one = &defaultPlatformServices(); });
    for (auto& thread : threads) thread.join();
    for (const auto* one : seen) EXPECT_EQ(one, &defaultPlatformServices());
}

TEST(PlatformServices, EachSessionIsANewOne) {
    EXPECT_NE(defaultPlatformServices().makeURLSession(), defaultPlatformServices().makeURLSession());
}

TEST(PlatformServices, UserDefaultsLieInTheFolderOfTheMainBundle) {
    const HostBundle host;
    const TemporaryFolder home;
    ::setenv("XDG_CONFIG_HOME", home.path().c_str(), 1);
    auto& defaults = *defaultPlatformServices().userDefaults;
    EXPECT_FALSE(std::filesystem::exists(home / "Tallyfoot")); // nothing is made before something is kept
    defaults.setObject("User", {std::string("user-1")});
    EXPECT_TRUE(defaults.synchronize());
    const auto folder = home / "Tallyfoot/" + bundleFolderName(std::filesystem::canonical(host.path()).string());
    EXPECT_TRUE(std::filesystem::is_directory(folder)) << folder;
}

TEST(PlatformServices, WithoutAHomeUserDefaultsLiveInMemory) {
    ::unsetenv("XDG_CONFIG_HOME");
    ::setenv("HOME", "/dev/null/home", 1);
    auto& defaults = *defaultPlatformServices().userDefaults;
    defaults.setInteger("EventCount", 7);
    EXPECT_EQ(defaults.integer("EventCount"), 7);
    EXPECT_FALSE(defaults.synchronize());
}

TEST(PlatformServices, TheScreenTakesTheHostsWord) {
    const HostBundle host;
    defaultPlatformServices().screen->setBounds({390, 844});
    EXPECT_EQ(defaultPlatformServices().screen->bounds().width, 390);
}

} // namespace
} // namespace tallyfoot::testing
