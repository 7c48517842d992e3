#include "Support/HostBundle.h"

#include "Tallyfoot/Facade/Configuration/Settings.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace tallyfoot::testing {
namespace {

TEST(Settings, StartEnabledWithOutputAndThreshold) {
    EXPECT_TRUE(processSettings().isEnabled);
    EXPECT_TRUE(processSettings().showOutput);
    EXPECT_FALSE(processSettings().ignoreFileSizeThreshold);
}

TEST(Settings, AreOnePerProcess) { EXPECT_EQ(&processSettings(), &processSettings()); }

TEST(Settings, MakeAnUnresolvedEnvironmentOnFirstAccessAndKeepIt) {
    const HostBundle bundle;
    const auto environment = processSettings().environment();
    ASSERT_TRUE(environment);
    EXPECT_EQ(environment->uploadPath(), "no such path");
    EXPECT_EQ(processSettings().environment(), environment);
}

TEST(Settings, KeepTheEnvironmentThatIsSet) {
    const auto environment = std::make_shared<Environment>();
    processSettings().setEnvironment(environment);
    EXPECT_EQ(processSettings().environment(), environment);
}

TEST(Settings, ThreadsThatAskAtOnceGetTheSameEnvironment) {
    std::vector<std::shared_ptr<Environment>> seen(8);
    std::vector<std::thread> threads;
    for (auto& one : seen) threads.emplace_back([&one] { one = processSettings().environment(); });
    for (auto& thread : threads) thread.join();
    for (const auto& one : seen) EXPECT_EQ(one, processSettings().environment());
}

} // namespace
} // namespace tallyfoot::testing
