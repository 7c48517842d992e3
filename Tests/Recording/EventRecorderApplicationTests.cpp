#include "Recording/RecorderHost.h"
#include "Recording/ShakyDisk.h"
#include "Support/MemoryUserDefaults.h"

#include "Tallyfoot/Platform/KeyedArchiver.h"
#include "Tallyfoot/Platform/UserDefaults.h"
#include "Tallyfoot/Recording/StoreKeys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

// Switches between applications, and what the store keeps of them.
namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// Counts the writes that no synchronise has followed yet.
class CountingDefaults final : public UserDefaults {
public:
    std::int64_t integer(std::string_view key) const override { return store_.integer(key); }
    double real(std::string_view key) const override { return store_.real(key); }
    std::optional<PropertyList> object(std::string_view key) const override { return store_.object(key); }

    void setInteger(std::string_view key, std::int64_t value) override {
        store_.setInteger(key, value);
        count();
    }
    void setReal(std::string_view key, double value) override {
        store_.setReal(key, value);
        count();
    }
    void setObject(std::string_view key, const PropertyList& value) override {
        store_.setObject(key, value);
        count();
    }
    void remove(std::string_view key) override {
        store_.remove(key);
        count();
    }
    bool synchronize() override {
        waiting = 0;
        return store_.synchronize();
    }

    int waiting = 0;
    int mostWaiting = 0;

private:
    void count() { mostWaiting = std::max(mostWaiting, ++waiting); }

    MemoryUserDefaults store_;
};

TEST(EventRecorder, SwitchingClosesTheOldFileAndSendsItUnderItsOwnName) {
    RecorderHost host;
    host.start();
    host.log();
    host.switchTo("Bank");
    EXPECT_EQ(host.eventCount(), 0);
    host.log();
    host.settle();
    ASSERT_EQ(host.server->waiting(), 1U);
    EXPECT_EQ(field(host.server->requests().back(), "appName"), "Shop");
    EXPECT_EQ(field(host.server->requests().back(), "appid"), "Shop-id");
    EXPECT_THAT(host.files("Bank", "Events"), SizeIs(1));
    EXPECT_THAT(host.knownApplications(), ElementsAre("Shop", "Bank"));
}

TEST(EventRecorder, AnOldApplicationWithNothingToSendLeavesTheListAndTheDisk) {
    RecorderHost host({.showOutput = true});
    host.start();
    host.log();
    host.switchTo("Bank");
    host.settle();
    host.server->answerWith("200");
    host.switchTo("Cafe"); // Bank never logged, Shop is sent
    host.settle();
    EXPECT_THAT(host.knownApplications(), ElementsAre("Cafe"));
    EXPECT_FALSE(std::filesystem::exists(host.folder("Shop", "")));
    EXPECT_TRUE(host.console->contains("\"Empty folder app name Shop\""));
    EXPECT_TRUE(host.console->contains("\"calling upload for old app Shop\""));
}

TEST(EventRecorder, AnOldApplicationWhoseArchiveIsOnItsWayStaysInTheList) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.switchTo("Bank");
    host.settle();
    EXPECT_EQ(host.server->requests().size(), 1U);
    EXPECT_THAT(host.knownApplications(), ElementsAre("Shop", "Bank"));
    host.server->answer(Error{"connection reset"});
    host.switchTo("Cafe");
    host.settle();
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1"));
    EXPECT_EQ(field(host.server->requests().back(), "appName"), "Shop");
}

TEST(EventRecorder, AnOldApplicationWhoseFoldersCannotBeReadIsNotTakenForEmpty) {
    RecorderHost host;
    const auto disk = std::make_shared<ShakyDisk>();
    host.services.fileManager = disk;
    host.start();
    host.log();
    host.switchTo("Bank");
    disk->cannotList = true;
    host.settle();
    disk->cannotList = false;
    EXPECT_THAT(host.knownApplications(), ElementsAre("Shop", "Bank"));
    host.switchTo("Cafe");
    host.settle();
    ASSERT_THAT(host.server->requests(), SizeIs(1));
    EXPECT_THAT(sentEvents(host.server->requests()[0]), ElementsAre("1"));
}

TEST(EventRecorder, AnApplicationWhoseNameIsNoUTF8IsKnownByOneName) {
    RecorderHost host({.appName = "Caf\xE9"});
    host.start();
    host.log();
    host.stop();
    host.start();
    EXPECT_THAT(host.knownApplications(), SizeIs(1));
    host.switchTo("Bank");
    host.settle();
    ASSERT_THAT(host.server->requests(), SizeIs(1));
    EXPECT_THAT(sentEvents(host.server->requests()[0]), ElementsAre("1"));
    host.server->answerWith("200");
    host.switchTo("Shop");
    host.settle();
    EXPECT_THAT(host.knownApplications(), ElementsAre("Shop"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(host.root / "data/Tallyfoot"), {}), 1);
}

TEST(EventRecorder, AKnownApplicationKeepsItsPlaceAndTakesItsNewFields) {
    RecorderHost host;
    host.start();
    host.switchTo("Bank");
    host.stop();
    host.start(std::make_shared<ApplicationInfo>("Shop", "new-id", "Wholesale", "W-1"));
    EXPECT_THAT(host.knownApplications(), ElementsAre("Shop", "Bank"));
    const KnownApplications known(*host.services.userDefaults, *host.services.keyedArchiver);
    EXPECT_EQ(known.list()[0]->appId(), "new-id");
    EXPECT_EQ(known.list()[0]->bizArea(), "Wholesale");
}

TEST(EventRecorder, TheCurrentApplicationIsStoredAtTheStartAndAtASwitch) {
    RecorderHost host;
    const auto current = [&] {
        const auto stored = host.services.userDefaults->object(storekeys::currentApplication);
        const auto coder = host.services.keyedArchiver->unarchivedObject(stored->as<PropertyList::Data>()->bytes);
        return ApplicationInfo(*coder).appName();
    };
    host.start();
    EXPECT_EQ(current(), "Shop");
    host.switchTo("Bank");
    EXPECT_EQ(current(), "Bank");
}

TEST(EventRecorder, EveryWriteToTheStoreIsFollowedByASynchronise) {
    RecorderHost host;
    const auto store = std::make_shared<CountingDefaults>();
    host.services.userDefaults = store;
    host.start();
    host.log();
    host.trigger();
    host.server->answerWith("10000003");
    host.switchTo("Bank");
    host.settle();
    EXPECT_EQ(store->waiting, 0);
    EXPECT_EQ(store->mostWaiting, 1);
}

TEST(EventRecorder, ASwitchPrintsEveryKnownNamePlainly) {
    RecorderHost host({.showOutput = true});
    host.start();
    host.console->clear();
    host.switchTo("Bank");
    EXPECT_TRUE(host.console->contains("Shop"));
    EXPECT_TRUE(host.console->contains("Bank"));
}

TEST(EventRecorder, EventsThatAKilledProcessLeftUnderAnotherApplicationAreSentNotDeleted) {
    RecorderHost host;
    host.start();
    host.log(); // stays in Shop's Events: no trigger, no switch
    host.stop();
    host.appName = "Bank";
    host.start();
    host.switchTo("Cafe");
    host.settle();
    ASSERT_EQ(host.server->waiting(), 1U);
    EXPECT_EQ(field(host.server->requests().back(), "appName"), "Shop");
    EXPECT_THAT(sentEvents(host.server->requests().back()), ElementsAre("1"));
}

TEST(EventRecorder, SwitchingBackWhileTheOldArchiveIsOnItsWayDoesNotSendItTwice) {
    RecorderHost host;
    host.start();
    host.log();
    host.trigger();
    host.switchTo("Bank");
    host.settle();
    host.switchTo("Shop");
    host.settle();
    host.trigger();
    EXPECT_EQ(host.server->requests().size(), 1U);
    host.server->answerWith("200");
    EXPECT_THAT(host.files("Shop", "Backup"), IsEmpty());
}

} // namespace
} // namespace tallyfoot::testing
