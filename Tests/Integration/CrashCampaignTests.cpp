#include "Integration/CampaignSetting.h"
#include "Integration/HostProcess.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"
#include "Tallyfoot/Platform/Posix/PosixUserDefaults.h"
#include "Tallyfoot/Platform/Posix/UserDefaultsFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>

namespace tallyfoot::testing {
namespace {

using ::testing::IsEmpty;

struct Counts {
    int crashes = 0;
    int saved = 0;
    int toldOnce = 0;
    int toldTwice = 0;
    int hangs = 0;
};

class CrashCampaign : public ::testing::Test {
protected:
    CrashCampaign() { ::setenv("XDG_CONFIG_HOME", (folder_ / "config").c_str(), 1); }

    // The identifier of the record that waits for the next start.
    std::string stored(std::string& reason) const {
        const auto place = userDefaultsFolder(folder_ / "bundle");
        const auto value = PosixUserDefaults(place.value(), std::make_shared<PosixPropertyLists>()).object("crash");
        const auto* record = value ? value->as<PropertyList::Dictionary>() : nullptr;
        if (record == nullptr || record->size() != 5) return {};
        reason = *record->at("crashreason").as<std::string>();
        return *record->at("evtId").as<std::string>();
    }

    void crash(unsigned round) {
        static constexpr std::array<std::pair<int, const char*>, 5> signals{
            {{SIGABRT, "SIGABRT"}, {SIGILL, "SIGILL"}, {SIGSEGV, "SIGSEGV"}, {SIGFPE, "SIGFPE"}, {SIGBUS, "SIGBUS"}}};
        const auto& [number, name] = signals[round % signals.size()];
        HostProcess host(device_, collector_.url(), "Shop", "run" + std::to_string(round));
        const auto events = std::uniform_int_distribution<std::size_t>(5, 40)(random_); // of each thread
        host.tell((round % 2 == 0 ? "burst 8 " : "roam 8 ") + std::to_string(events));
        host.awaitAcknowledgements(std::uniform_int_distribution<std::size_t>(0, 8 * events - 1)(random_));
        const auto status = host.crash(number, random_);
        ++counts_.crashes;
        if (!status) ++counts_.hangs;
        EXPECT_EQ(status.value_or(-1), number) << "round " << round;
        std::string reason;
        const auto identifier = stored(reason);
        if (reason == name) ++counts_.saved;
        crashes_.insert(identifier);
        awaited_.insert(host.acknowledged().begin(), host.acknowledged().end());
    }

    // Every event acknowledged before a crash, and every crash, reaches the server.
    void settle(unsigned round) {
        HostProcess host(device_, collector_.url(), "Shop", "settle" + std::to_string(round));
        awaited_.insert(crashes_.begin(), crashes_.end());
        EXPECT_THAT(deliver(host, collector_, awaited_), IsEmpty());
        host.quit();
        countTold();
        awaited_.clear();
        crashes_.clear();
        collector_.reset();
    }

    // An upload that was cut off may be sent again, with the same log file. A crash that was told twice is
    // in two files, or twice in one.
    void countTold() {
        std::map<std::string, std::map<std::string, std::map<std::int64_t, int>>> times; // by file and upload
        for (const auto& event : collector_.events("type=crash"))
            ++times[event.at("record").at("evtId")][event.at("file")][event.at("upload")];
        for (const auto& identifier : crashes_) {
            int told = 0;
            for (const auto& [file, uploads] : times[identifier]) {
                int most = 0;
                for (const auto& [upload, count] : uploads) most = std::max(most, count);
                told += most;
            }
            if (told == 1) ++counts_.toldOnce;
            if (told > 1) ++counts_.toldTwice;
        }
    }

    TemporaryFolder folder_;
    const Device device_{folder_.path()};
    CollectorProcess collector_;
    std::mt19937 random_;
    Counts counts_;
    std::set<std::string> crashes_;
    std::set<std::string> awaited_;
};

TEST_F(CrashCampaign, AtRandomMomentsEveryCrashIsToldOnceAndNoEventIsMissing) {
    const auto seed = setting("TALLYFOOT_CRASH_SEED", std::random_device{}());
    SCOPED_TRACE("TALLYFOOT_CRASH_SEED=" + std::to_string(seed));
    random_.seed(seed);
    const auto rounds = static_cast<int>(setting("TALLYFOOT_CRASH_ROUNDS", 50));
    constexpr int betweenSettlements = 25;
    for (int round = 0; round < rounds; ++round) {
        crash(static_cast<unsigned>(round));
        if (round % betweenSettlements == betweenSettlements - 1 || round == rounds - 1)
            settle(static_cast<unsigned>(round));
    }
    std::printf("%d crashes, %d saved, %d told once, %d told twice, %d hangs\n", counts_.crashes, counts_.saved,
                counts_.toldOnce, counts_.toldTwice, counts_.hangs);
    EXPECT_EQ(counts_.saved, rounds);
    EXPECT_EQ(counts_.toldOnce, rounds);
    EXPECT_EQ(counts_.toldTwice, 0);
    EXPECT_EQ(counts_.hangs, 0);
}

} // namespace
} // namespace tallyfoot::testing
