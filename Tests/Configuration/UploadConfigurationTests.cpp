#include "Support/HostBundle.h"

#include "Tallyfoot/Facade/Configuration/Settings.h"
#include "Tallyfoot/Facade/Configuration/UploadConfiguration.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>
#include <type_traits>
#include <vector>

namespace tallyfoot::testing {
namespace {

constexpr const char* resource =
    "/qmx/tallyfootServer/businessareas/utilities/subjectareas/tallyfootServer/proxy/tallyfootUploadFiles";

TEST(UploadConfiguration, FiveSecondsAndThreeEventsAreRaisedToTen) {
    const UploadConfiguration configuration(5, 3);
    EXPECT_EQ(configuration.frequency(), RepeaterInterval::seconds(10));
    EXPECT_EQ(configuration.eventsCount(), 10);
}

TEST(UploadConfiguration, ElevenAndElevenAreKept) {
    const UploadConfiguration configuration(11, 11);
    EXPECT_EQ(configuration.frequency(), RepeaterInterval::seconds(11));
    EXPECT_EQ(configuration.eventsCount(), 11);
}

TEST(UploadConfiguration, TenAndTenAreKept) {
    const UploadConfiguration configuration(10, 10);
    EXPECT_EQ(configuration.frequency(), RepeaterInterval::seconds(10));
    EXPECT_EQ(configuration.eventsCount(), 10);
}

TEST(UploadConfiguration, NegativeValuesAreRaisedToTen) {
    const UploadConfiguration configuration(std::numeric_limits<std::int64_t>::min(), -1);
    EXPECT_EQ(configuration.frequency(), RepeaterInterval::seconds(10));
    EXPECT_EQ(configuration.eventsCount(), 10);
}

TEST(UploadConfiguration, HasFilesAndStorageOfTenMebibytes) {
    const UploadConfiguration configuration(60, 20);
    EXPECT_EQ(configuration.fileSize(), Size::bytes(10485760));
    EXPECT_EQ(configuration.storageSize(), Size::bytes(10485760));
}

TEST(UploadConfiguration, HasNoUploadPathUntilOneIsSet) {
    const auto configuration = std::make_shared<UploadConfiguration>(60, 20);
    EXPECT_EQ(configuration->uploadPath(), std::nullopt);
    configuration->setUploadPath("http://127.0.0.1:9090/upload");
    EXPECT_EQ(configuration->uploadPath(), "http://127.0.0.1:9090/upload");
    configuration->setUploadPath(std::nullopt);
    EXPECT_EQ(configuration->uploadPath(), std::nullopt);
}

TEST(UploadConfiguration, UploadPathMayBeSetAndReadByManyThreads) {
    UploadConfiguration configuration(60, 20);
    configuration.setUploadPath(std::string(100, 'a'));
    std::vector<std::thread> threads;
    for (const char letter : {'a', 'b', 'c', 'd'})
        threads.emplace_back([&configuration, letter] {
            for (int i = 0; i < 500; ++i) {
                configuration.setUploadPath(std::string(100, letter));
                const auto path = configuration.uploadPath();
                ASSERT_TRUE(path);
                EXPECT_EQ(*path, std::string(100, path->front()));
            }
        });
    for (auto& thread : threads) thread.join();
}

TEST(UploadConfiguration, CannotBeMadeOfNothing) { EXPECT_FALSE(std::is_default_constructible_v<UploadConfiguration>); }

TEST(UploadConfiguration, FixedUploadPathIsOnTheDefaultServerAndSaysUtility) {
    EXPECT_EQ(UploadConfiguration::fixedUploadPath(),
              "https://" TALLYFOOT_DEFAULT_UAT_HOST
              "/qmx/tallyfootServer/businessareas/utility/subjectareas/tallyfootServer/proxy/tallyfootUploadFiles");
}

TEST(DefaultUploadConfiguration, IsHalfAnHourTenEventsAndFiveMebibytes) {
    const auto configuration = UploadConfiguration::defaultConfiguration();
    EXPECT_EQ(configuration->frequency(), RepeaterInterval::seconds(1800));
    EXPECT_EQ(configuration->eventsCount(), 10);
    EXPECT_EQ(configuration->fileSize(), Size::bytes(5242880));
    EXPECT_EQ(configuration->storageSize(), Size::bytes(5242880));
}

TEST(DefaultUploadConfiguration, IsMadeOnce) {
    EXPECT_EQ(UploadConfiguration::defaultConfiguration(), UploadConfiguration::defaultConfiguration());
}

TEST(DefaultUploadConfiguration, CopiesEvenAnUnresolvedPath) {
    const HostBundle bundle;
    EXPECT_EQ(UploadConfiguration::defaultConfiguration()->uploadPath(), "no such path");
}

TEST(DefaultUploadConfiguration, KeepsThePathThatTheEnvironmentHadAtItsFirstUse) {
    HostBundle bundle;
    bundle.addEnvironment("Shop", "<key>uploadBases</key><dict><key>dev</key><string>dev.example</string>"
                                  "<key>prod</key><string>prod.example:8443</string></dict>");
    processSettings().environment()->setEndpoint(Endpoint::dev);
    const auto configuration = UploadConfiguration::defaultConfiguration();
    EXPECT_EQ(configuration->uploadPath(), std::string("https://dev.example") + resource);

    processSettings().environment()->setEndpoint(Endpoint::prod);
    EXPECT_EQ(processSettings().environment()->uploadPath(), std::string("https://prod.example:8443") + resource);
    processSettings().setEnvironment(std::make_shared<Environment>());
    EXPECT_EQ(UploadConfiguration::defaultConfiguration()->uploadPath(), std::string("https://dev.example") + resource);
}

TEST(DefaultUploadConfiguration, MayBeGivenAnotherPath) {
    UploadConfiguration::defaultConfiguration()->setUploadPath("http://127.0.0.1:1/");
    EXPECT_EQ(UploadConfiguration::defaultConfiguration()->uploadPath(), "http://127.0.0.1:1/");
}

} // namespace
} // namespace tallyfoot::testing
