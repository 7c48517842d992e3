#include "StorageFixture.h"

#include "Tallyfoot/Storage/DatedNames.h"

#include <set>
#include <thread>

namespace tallyfoot::testing {
namespace {

class DatedNamesTest : public StorageFixture {
protected:
    std::shared_ptr<AppFolder> folder = makeAppFolder();
    DatedNames dated{fileManager, clock, *folder};
};

TEST_F(DatedNamesTest, ANameIsTheMomentToTheMillisecond) {
    EXPECT_EQ(dated.next(".log"), "07-03-2024T14-05-09-123.log");
    clock.advance(std::chrono::seconds(51));
    EXPECT_EQ(dated.next(".zip"), "07-03-2024T14-06-00-123.zip");
}

TEST_F(DatedNamesTest, ANameOfThisProcessMovesOnByAMillisecond) {
    EXPECT_EQ(dated.next(".log"), "07-03-2024T14-05-09-123.log");
    EXPECT_EQ(dated.next(".log"), "07-03-2024T14-05-09-124.log");
    EXPECT_EQ(dated.next(".zip"), "07-03-2024T14-05-09-125.zip");
    clock.advance(std::chrono::milliseconds(1));
    EXPECT_EQ(dated.next(".log"), "07-03-2024T14-05-09-126.log");
    clock.advance(std::chrono::milliseconds(100));
    EXPECT_EQ(dated.next(".log"), "07-03-2024T14-05-09-224.log");
}

TEST_F(DatedNamesTest, ANameOnDiskMovesOnWhicheverFolderAndExtensionItHas) {
    put(Folder::events, "07-03-2024T14-05-09-123.log", "");
    put(Folder::upload, "07-03-2024T14-05-09-124.log", "");
    put(Folder::backup, "07-03-2024T14-05-09-125.zip", "");
    put(Folder::upload, "07-03-2024T14-05-09-126.txt", "");
    EXPECT_EQ(dated.next(".log"), "07-03-2024T14-05-09-126.log");
}

TEST_F(DatedNamesTest, ANameIsNotGivenAgainWhenTheClockIsSetBack) {
    std::set<std::string> given;
    const auto start = clock.now();
    for (int count = 0; count < 10; ++count) {
        given.insert(dated.next(".log"));
        clock.advance(std::chrono::milliseconds(3));
    }
    clock.set(start);
    for (int count = 0; count < 30; ++count) given.insert(dated.next(".log"));
    EXPECT_EQ(given.size(), 40U);
    clock.set(start - std::chrono::hours(1));
    EXPECT_EQ(dated.next(".log"), "07-03-2024T13-05-09-123.log"); // the device's clock is believed all the same
}

TEST_F(DatedNamesTest, ThousandsOfNamesOfOneMomentAreAllDifferent) {
    std::set<std::string> given;
    for (int count = 0; count < 5000; ++count) given.insert(dated.next(".log"));
    EXPECT_EQ(given.size(), 5000U);
    EXPECT_TRUE(given.contains("07-03-2024T14-05-14-122.log"));
}

TEST_F(DatedNamesTest, NoTwoThreadsGetOneName) {
    constexpr std::size_t threads = 4;
    std::array<std::vector<std::string>, threads> given;
    {
        std::vector<std::jthread> workers;
        for (auto& mine : given) {
            workers.emplace_back([&] {
                for (int count = 0; count < 200; ++count) mine.push_back(dated.next(".log"));
            });
        }
    }
    std::set<std::string> all;
    for (const auto& mine : given) all.insert(mine.begin(), mine.end());
    EXPECT_EQ(all.size(), threads * 200);
}

TEST_F(DatedNamesTest, TheDateOfANameIsTheMomentItWasGivenAt) {
    EXPECT_EQ(DatedNames::date(dated.next(".log")), clock.now());
    EXPECT_EQ(DatedNames::date("07-03-2024T14-05-09-123.tar.gz"), clock.now());
    EXPECT_EQ(DatedNames::date("07-03-2024T14-05-09-123"), clock.now());
}

TEST_F(DatedNamesTest, NamesFollowTheDevicesLocaleAndTimeZone) {
    ::setenv("LC_ALL", "ar_EG.UTF-8", 1); // before the process's first name
    ::setenv("TZ", "Asia/Tokyo", 1);
    const auto name = dated.next(".log");
    EXPECT_EQ(name, "٠٧-٠٣-٢٠٢٤T٢٣-٠٥-٠٩-١٢٣.log");
    EXPECT_EQ(DatedNames::date(name), clock.now());
}

TEST_F(DatedNamesTest, ANameThatIsNoDateHasNone) {
    for (const auto* name : {"", "notes.log", "07-03-2024.log", "07-03-2024T14-05-09-123x.log", ".log"}) {
        EXPECT_EQ(DatedNames::date(name), std::nullopt) << name;
    }
}

} // namespace
} // namespace tallyfoot::testing
