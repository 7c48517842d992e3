#include "Integration/HostProcess.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Facade/Configuration/Settings.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Recording/EventRecorder.h"
#include "Tallyfoot/Recording/Timing/Repeater.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

namespace tallyfoot::testing {
namespace {

using ::testing::IsEmpty;

constexpr int threadCount = 16;
constexpr int eventsOfAThread = 150;

std::shared_ptr<ApplicationInfo> application(int number) {
    return std::make_shared<ApplicationInfo>("App" + std::to_string(number), "id", "area", "area-id");
}

TEST(Stress, EveryEventIsAccountedForWhileThreadsTimersSwitchesAndABadServerRunAtOnce) {
    TemporaryFolder folder;
    const Device device(folder.path());
    for (const auto& [name, value] : device.environment()) ::setenv(name.c_str(), value.c_str(), 1);
    CollectorProcess collector({"--random-faults", "7"});

    const PlatformServices& services = defaultPlatformServices();
    Settings& settings = processSettings(); // an upload or a tick may be under way when the test ends
    settings.showOutput = false;
    auto configuration = std::make_shared<UploadConfiguration>(10, 10);
    configuration->setUploadPath(collector.url());
    const auto recorder = EventRecorder::make(services, settings, configuration, application(0),
                                              [] { return std::make_shared<Authentication>("user-1", "token-1"); });

    std::atomic<bool> isOver = false;
    const auto trigger = [recorder](Repeater&) { recorder->triggerUpload(); };
    auto first =
        Repeater::every(*services.dispatch, RepeaterInterval::milliseconds(10), std::nullopt, nullptr, trigger);
    auto second =
        Repeater::every(*services.dispatch, RepeaterInterval::milliseconds(10), std::nullopt, nullptr, trigger);

    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread)
        threads.emplace_back([&, thread] {
            for (int event = 0; event < eventsOfAThread; ++event) {
                recorder->record("{\n  \"evtId\" : \"" + std::to_string(thread) + "-" + std::to_string(event)
                                 + "\",\n  \"evtType\" : \"action\"\n}jsonsplit");
            }
        });
    std::thread switcher([&] {
        for (int number = 1; !isOver; number = (number + 1) % 3) {
            recorder->switchApplication(application(number));
            std::this_thread::yield();
        }
    });
    for (auto& thread : threads) thread.join();
    isOver = true;
    switcher.join();

    // The server behaves from now on, and everything is to arrive.
    collector.queueFaults(nlohmann::json::array({{{"kind", "accept"}}}));
    std::set<std::string> missing;
    for (int thread = 0; thread < threadCount; ++thread)
        for (int event = 0; event < eventsOfAThread; ++event)
            missing.insert(std::to_string(thread) + "-" + std::to_string(event));
    const std::size_t logged = missing.size();
    for (int round = 0; round < 200 && !missing.empty(); ++round) {
        recorder->switchApplication(application(round % 3));
        recorder->triggerUpload();
        (void)collector.expect({{"count", logged}, {"timeoutMilliseconds", 200}});
        for (const auto& event : collector.confirmed()) missing.erase(event.at("evtId").get<std::string>());
    }
    first->removeAllObservers(true);
    second->removeAllObservers(true);
    std::set<std::string> lost;
    if (!missing.empty()) { // else nothing needs to be looked for among files that still move
        const auto stored = device.storedEvents();
        for (const auto& id : missing)
            if (!stored.contains(id)) lost.insert(id);
    }
    EXPECT_THAT(lost, IsEmpty()) << "neither at the server nor on the device";
    EXPECT_THAT(missing, IsEmpty()) << "on the device, but never sent";

    std::set<std::string> arrived;
    for (const auto& event : collector.events()) arrived.insert(event.at("evtId").get<std::string>());
    EXPECT_EQ(arrived.size(), logged) << "events that nobody logged";
    EXPECT_THAT(collector.problems(), IsEmpty());
}

} // namespace
} // namespace tallyfoot::testing
