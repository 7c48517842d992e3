#include "Support/HostBundle.h"

#include "Tallyfoot/Facade/Configuration/Environment.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <filesystem>
#include <thread>
#include <vector>

namespace tallyfoot::testing {
namespace {

constexpr const char* unresolved = "no such path";

std::string composed(const std::string& base) {
    return "https://" + base
           + "/qmx/tallyfootServer/businessareas/utilities/subjectareas/tallyfootServer/proxy/tallyfootUploadFiles";
}

std::string bases(const std::string& entries) { return "<key>uploadBases</key><dict>" + entries + "</dict>"; }

std::string base(const std::string& key, const std::string& host) {
    return "<key>" + key + "</key><string>" + host + "</string>";
}

class EnvironmentTest : public ::testing::Test {
protected:
    HostBundle bundle;
    Environment environment;
};

TEST_F(EnvironmentTest, StartsUnresolvedAndReadsNothing) {
    bundle.addEnvironment("Shop", bases(base("dev", "dev.example")));
    EXPECT_EQ(environment.endpoint(), std::nullopt);
    EXPECT_EQ(environment.uploadPath(), unresolved);
    EXPECT_EQ(environment.environmentDict(), std::nullopt);
}

TEST_F(EnvironmentTest, WithoutAnyResourceEveryEndpointLeavesThePath) {
    for (const auto endpoint : {Endpoint::dev, Endpoint::uat, Endpoint::prod}) {
        environment.setEndpoint(endpoint);
        EXPECT_EQ(environment.endpoint(), endpoint);
        EXPECT_EQ(environment.uploadPath(), unresolved);
    }
    EXPECT_EQ(environment.environmentDict(), std::nullopt);
}

TEST_F(EnvironmentTest, ComposesTheUploadPathFromTheEndpointsBase) {
    bundle.addEnvironment(
        "Shop", bases(base("dev", "dev.example") + base("uat", "uat.example:8443") + base("prod", "prod.example")));
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), composed("dev.example"));
    environment.setEndpoint(Endpoint::uat);
    EXPECT_EQ(environment.uploadPath(), composed("uat.example:8443"));
    environment.setEndpoint(Endpoint::prod);
    EXPECT_EQ(environment.uploadPath(), composed("prod.example"));
}

TEST_F(EnvironmentTest, AnAbsentKeyLeavesThePathAndAPresentOneComposesIt) {
    bundle.addEnvironment("Shop", bases(base("prod", "prod.example")));
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), unresolved);
    environment.setEndpoint(Endpoint::prod);
    EXPECT_EQ(environment.uploadPath(), composed("prod.example"));
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), composed("prod.example"));
}

TEST_F(EnvironmentTest, ReSettingTheSameEndpointReloadsThePropertyList) {
    bundle.addEnvironment("Shop", bases(base("dev", "old.example")));
    environment.setEndpoint(Endpoint::dev);
    bundle.addEnvironment("Shop", bases(base("dev", "new.example")));
    EXPECT_EQ(environment.uploadPath(), composed("old.example"));
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), composed("new.example"));
}

TEST_F(EnvironmentTest, ReSettingTheSameEndpointRecomposesAnOverwrittenPath) {
    bundle.addEnvironment("Shop", bases(base("dev", "dev.example")));
    environment.setUploadPath("http://127.0.0.1:9090/upload");
    EXPECT_EQ(environment.uploadPath(), "http://127.0.0.1:9090/upload");
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), composed("dev.example"));
}

TEST_F(EnvironmentTest, WhatCannotBeResolvedLeavesAnOverwrittenPath) {
    environment.setUploadPath("http://127.0.0.1:9090/upload");
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), "http://127.0.0.1:9090/upload");
}

TEST_F(EnvironmentTest, SettingNoEndpointReadsThePropertyListAndLeavesThePath) {
    bundle.addEnvironment("Shop", bases(base("dev", "dev.example")));
    environment.setEndpoint(Endpoint::dev);
    bundle.addEnvironment("Shop", bases(base("dev", "new.example")) + base("note", "second"));
    environment.setEndpoint(std::nullopt);
    EXPECT_EQ(environment.endpoint(), std::nullopt);
    EXPECT_EQ(environment.uploadPath(), composed("dev.example"));
    ASSERT_TRUE(environment.environmentDict());
    EXPECT_TRUE(environment.environmentDict()->contains("note"));
}

TEST_F(EnvironmentTest, ANumberThatIsNoEndpointCountsAsNone) {
    bundle.addEnvironment("Shop", bases(base("dev", "dev.example") + base("", "nobody.example")));
    environment.setEndpoint(Endpoint::dev);
    for (const int number : {-1, 3, 1000000}) {
        environment.setEndpoint(static_cast<Endpoint>(number));
        EXPECT_EQ(environment.endpoint(), std::nullopt) << number;
        EXPECT_EQ(environment.uploadPath(), composed("dev.example")) << number;
    }
}

TEST_F(EnvironmentTest, TheFirstFrameworkThatHasTheResourceWins) {
    std::filesystem::create_directories(bundle.path() + "/Frameworks/Aardvark.framework");
    bundle.addEnvironment("Shop", bases(base("dev", "shop.example")));
    bundle.addEnvironment("Bakery", bases(base("dev", "bakery.example")));
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), composed("bakery.example"));
}

TEST_F(EnvironmentTest, TheFirstResourceWinsEvenWhenItIsMalformed) {
    bundle.addEnvironment("Shop", bases(base("dev", "shop.example")));
    writeFile(bundle.environmentPath("Bakery"), "this is no property list");
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), unresolved);
    EXPECT_EQ(environment.environmentDict(), std::nullopt);
}

TEST_F(EnvironmentTest, AnUnreadableFileTakesTheDictionaryButNotThePath) {
    bundle.addEnvironment("Shop", bases(base("dev", "dev.example")));
    environment.setEndpoint(Endpoint::dev);
    ASSERT_TRUE(environment.environmentDict());
    writeFile(bundle.environmentPath("Shop"), "");
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.environmentDict(), std::nullopt);
    EXPECT_EQ(environment.uploadPath(), composed("dev.example"));
}

TEST_F(EnvironmentTest, AFolderInTheResourcesPlaceResolvesNothing) {
    bundle.addEnvironment("Shop", bases(base("dev", "shop.example")));
    std::filesystem::create_directories(bundle.environmentPath("Bakery"));
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), unresolved);
}

TEST_F(EnvironmentTest, AResourceThatGoesAwayChangesNothing) {
    bundle.addEnvironment("Shop", bases(base("dev", "dev.example") + base("prod", "prod.example")));
    environment.setEndpoint(Endpoint::dev);
    std::filesystem::remove(bundle.environmentPath("Shop"));
    environment.setEndpoint(Endpoint::prod);
    EXPECT_EQ(environment.uploadPath(), composed("dev.example"));
    EXPECT_TRUE(environment.environmentDict());
}

TEST_F(EnvironmentTest, TheResourceMayLieInTheFrameworksResources) {
    bundle.addEnvironment("Shop", bases(base("dev", "dev.example")), "Resources");
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), composed("dev.example"));
}

TEST_F(EnvironmentTest, AnEmptyDictionaryResolvesNothing) {
    bundle.addEnvironment("Shop", "");
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), unresolved);
}

TEST_F(EnvironmentTest, ADictionaryWithoutUploadBasesResolvesNothing) {
    bundle.addEnvironment("Shop", base("dev", "dev.example"));
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), unresolved);
}

TEST_F(EnvironmentTest, UploadBasesThatAreNoDictionaryResolveNothing) {
    bundle.addEnvironment("Shop", base("uploadBases", "dev.example"));
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), unresolved);
}

TEST_F(EnvironmentTest, OneBaseThatIsNoTextSpoilsThemAll) {
    for (const char* odd : {"<integer>1</integer>", "<true/>", "<dict/>", "<date>2024-05-01T08:00:00Z</date>",
                            "<data>AAAA</data>", "<real>1.5</real>", "<array/>"}) {
        bundle.addEnvironment("Shop", bases(base("dev", "dev.example") + "<key>other</key>" + odd));
        environment.setEndpoint(Endpoint::dev);
        EXPECT_EQ(environment.uploadPath(), unresolved) << odd;
        EXPECT_TRUE(environment.environmentDict()) << odd;
    }
}

TEST_F(EnvironmentTest, OtherEntriesOfAnyTypeDoNoHarm) {
    bundle.addEnvironment("Shop", "<key>n</key><integer>1</integer><key>when</key><date>2024-05-01T08:00:00Z</date>"
                                      + bases(base("dev", "dev.example")));
    environment.setEndpoint(Endpoint::dev);
    EXPECT_EQ(environment.uploadPath(), composed("dev.example"));
}

TEST_F(EnvironmentTest, AThreadThatIsCancelledCompletesItsChange) {
    bundle.addEnvironment("Shop", bases(base("dev", "dev.example")));
    std::thread([this] {
        ::pthread_cancel(::pthread_self()); // heard where the thread may wait next
        environment.setEndpoint(Endpoint::dev);
        ::pthread_testcancel();
    }).join();
    EXPECT_EQ(environment.uploadPath(), composed("dev.example"));
}

TEST_F(EnvironmentTest, OfTwoChangesAtOnceThePathBelongsToTheEndpointThatStays) {
    bundle.addEnvironment("Shop", bases(base("dev", "dev.example") + base("prod", "prod.example")));
    for (int round = 0; round < 50; ++round) {
        std::thread other([this] { environment.setEndpoint(Endpoint::dev); });
        environment.setEndpoint(Endpoint::prod);
        other.join();
        const bool isDev = environment.endpoint() == Endpoint::dev;
        ASSERT_EQ(environment.uploadPath(), composed(isDev ? "dev.example" : "prod.example"));
    }
}

} // namespace
} // namespace tallyfoot::testing
