#include "Support/HostBundle.h"

#include "Tallyfoot/Platform/Bundle.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/Screen.h"
#include "Tallyfoot/Platform/URLSession.h"

#include <gtest/gtest.h>

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

TEST(PlatformServices, TheScreenTakesTheHostsWord) {
    const HostBundle host;
    defaultPlatformServices().screen->setBounds({390, 844});
    EXPECT_EQ(defaultPlatformServices().screen->bounds().width, 390);
}

} // namespace
} // namespace tallyfoot::testing
