#include "Integration/CampaignSetting.h"
#include "Integration/HostProcess.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace tallyfoot::testing {
namespace {

using ::testing::IsEmpty;

// What reached the server and what is still on the device, each counted as often as it is there.
std::map<std::string, int> occurrences(CollectorProcess& collector) {
    std::map<std::string, int> count;
    for (const auto& event : collector.events()) ++count[event.at("evtId").get<std::string>()];
    return count;
}

class Kill : public ::testing::TestWithParam<bool> {};

TEST_P(Kill, AtRandomMomentsLosesNoAcknowledgedEvent) {
    const auto seed = setting("TALLYFOOT_KILL_SEED", std::random_device{}());
    SCOPED_TRACE("TALLYFOOT_KILL_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    const bool serverMisbehaves = GetParam();

    TemporaryFolder folder;
    const Device device(folder.path());
    CollectorProcess collector(serverMisbehaves ? std::vector<std::string>{"--random-faults", std::to_string(seed)}
                                                : std::vector<std::string>{});
    std::set<std::string> acknowledged;
    const auto rounds = setting("TALLYFOOT_KILL_ROUNDS", 12);
    for (unsigned round = 0; round < rounds; ++round) {
        HostProcess host(device, collector.url(), round % 4 == 3 ? "Bank" : "Shop", "run" + std::to_string(round));
        const auto events = std::uniform_int_distribution<std::size_t>(20, 250)(random); // of each thread
        host.tell((round % 2 == 0 ? "burst 4 " : "roam 4 ") + std::to_string(events));
        host.awaitAcknowledgements(std::uniform_int_distribution<std::size_t>(0, 4 * events)(random));
        host.kill();
        acknowledged.insert(host.acknowledged().begin(), host.acknowledged().end());

        // At every moment each of them is at the server or on the device.
        const auto stored = device.storedEvents();
        const auto arrived = occurrences(collector);
        for (const auto& id : acknowledged)
            ASSERT_TRUE(stored.contains(id) || arrived.contains(id)) << id << " is lost after round " << round;
    }

    HostProcess host(device, collector.url(), "Shop", "last");
    const auto missing = deliver(host, collector, acknowledged);
    const auto stored = device.storedEvents();
    for (const auto& id : missing)
        EXPECT_TRUE(stored.contains(id)) << id << " is neither at the server nor on the device";
    EXPECT_THAT(missing, IsEmpty());
    host.quit();

    // Nothing that nobody logged: an unacknowledged event belongs to the moment of a kill.
    std::map<std::string, int> strangers;
    for (const auto& [id, count] : occurrences(collector))
        if (!acknowledged.contains(id) && !host.acknowledged().contains(id)) ++strangers[id.substr(0, id.find('-'))];
    for (const auto& [run, count] : strangers) EXPECT_LE(count, 4) << "at most one for each thread of " << run;
    for (const auto& problem : collector.problems())
        EXPECT_EQ(problem.at("kind"), "interrupted") << problem; // a kill in the middle of an upload
}

INSTANTIATE_TEST_SUITE_P(Servers, Kill, ::testing::Bool(), [](const auto& parameter) {
    return parameter.param ? "WithAServerThatMisbehaves" : "WithAServerThatAccepts";
});

TEST(Processes, OfOneApplicationAtOnceLoseNothingOfEachOther) {
    TemporaryFolder folder;
    const Device device(folder.path());
    CollectorProcess collector;
    std::set<std::string> acknowledged;
    const auto rounds = setting("TALLYFOOT_PROCESSES_ROUNDS", 4);
    for (unsigned round = 0; round < rounds; ++round) {
        const auto run = "run" + std::to_string(round);
        HostProcess first(device, collector.url(), "Shop", run + "first");
        first.tell("burst 2 400");
        HostProcess second(device, collector.url(), "Shop", run + "second"); // starts in the middle of the first's work
        second.tell("burst 2 400");
        HostProcess third(device, collector.url(), "Shop", run + "third");
        third.tell("burst 2 400");
        for (auto* host : {&first, &second, &third}) {
            host->awaitAcknowledgements(800);
            host->kill();
            acknowledged.insert(host->acknowledged().begin(), host->acknowledged().end());
        }
        const auto stored = device.storedEvents();
        const auto arrived = occurrences(collector);
        for (const auto& id : acknowledged)
            ASSERT_TRUE(stored.contains(id) || arrived.contains(id)) << id << " is lost in round " << round;
    }
}

} // namespace
} // namespace tallyfoot::testing
