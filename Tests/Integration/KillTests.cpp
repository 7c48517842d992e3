#include "Integration/CampaignSetting.h"
#include "Integration/HostProcess.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <random>

namespace tallyfoot::testing {
namespace {

using ::testing::IsEmpty;

// The events at the server, each counted as often as it came. Asks for what is new only, since a campaign asks often.
class Arrivals {
public:
    explicit Arrivals(CollectorProcess& collector) : collector_(collector) {}

    const std::map<std::string, int>& now() {
        for (const auto& event : collector_.events("after=" + std::to_string(last_))) {
            ++counts_[event.at("evtId").get<std::string>()];
            last_ = event.at("id").get<std::int64_t>(); // they come in the order of these
        }
        return counts_;
    }

private:
    CollectorProcess& collector_;
    std::int64_t last_ = 0;
    std::map<std::string, int> counts_;
};

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
    Arrivals arrivals(collector);
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
        const auto& arrived = arrivals.now();
        for (const auto& id : acknowledged)
            ASSERT_TRUE(stored.contains(id) || arrived.contains(id)) << id << " is lost after round " << round;
    }

    HostProcess host(device, collector.url(), "Shop", "last");
    const auto missing = deliver(host, collector, acknowledged);
    host.quit();
    const auto stored = device.storedEvents(); // not before: while it runs, its files move
    for (const auto& id : missing)
        EXPECT_TRUE(stored.contains(id)) << id << " is neither at the server nor on the device";
    EXPECT_THAT(missing, IsEmpty());

    // Nothing that nobody logged: an unacknowledged event belongs to the moment of a kill.
    std::map<std::string, int> strangers;
    for (const auto& [id, count] : arrivals.now())
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
    Arrivals arrivals(collector);
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
        const auto& arrived = arrivals.now();
        for (const auto& id : acknowledged)
            ASSERT_TRUE(stored.contains(id) || arrived.contains(id)) << id << " is lost in round " << round;
    }
}

} // namespace
} // namespace tallyfoot::testing
