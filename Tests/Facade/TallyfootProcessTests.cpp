#include "Facade/TallyfootTest.h"

#include <gmock/gmock.h>
#include <pthread.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

// The host's threads, its errno and its end.
namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

TEST_F(TallyfootTest, TheLastOfManySwitchesAtOnceIsTheOneThatRecords) {
    start();
    std::vector<std::thread> threads;
    for (const std::string name : {"A", "B", "C", "D"})
        threads.emplace_back([name] {
            for (int round = 0; round < 5; ++round) {
                setApplication(name);
                Tallyfoot::log("a", {});
            }
        });
    for (auto& thread : threads) thread.join();
    Tallyfoot::log("last", {});
    const auto last = records(Tallyfoot::appInfo()->appName());
    ASSERT_THAT(last, Not(IsEmpty()));
    EXPECT_EQ(last.back()["evtType"], "last");
}

TEST_F(TallyfootTest, EveryCallMayComeAtOnce) {
    const std::vector<std::function<void(int)>> calls{
        [this](int round) {
            Tallyfoot::configure(configuration_, {"UISlider"}, [round] {
                Tallyfoot::log("asked", {});
                if (round % 3 == 0) throw std::runtime_error("host");
                if (round % 5 == 0) setApplication("Bank");
                return std::make_shared<Authentication>("user-1", "token-1");
            });
        },
        [](int round) { setApplication(round % 2 == 0 ? "Shop" : "Bank"); },
        [](int) { Tallyfoot::setAppInfo(nullptr); },
        [](int round) { Tallyfoot::setPageParent(std::to_string(round)); },
        [](int round) {
            Tallyfoot::categoryCustomTitles({{"UISlider", std::to_string(round)}});
        },
        [](int) { Tallyfoot::modifyEnvironment([](Environment& environment) { environment.setUploadPath("x"); }); },
        [](int) { Tallyfoot::setEnvironment(std::make_shared<Environment>()); },
        [](int round) { Tallyfoot::setIsEnabled(round % 2 == 0); },
        [](int) { (void)Tallyfoot::shared().ignoreClasses(); },
        [](int) {
            Tallyfoot::log(EventType::action, {{LogAttribute::evtCategory, "UISlider"}}, {{"k", "v"}});
        }};
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < 4; ++thread)
        threads.emplace_back([&calls, thread] {
            for (int round = 0; round < 60; ++round)
                calls[(thread + static_cast<std::size_t>(round)) % calls.size()](round);
        });
    for (auto& thread : threads) thread.join();
    Tallyfoot::setIsEnabled(true);
    start();
    Tallyfoot::log("last", {});
    ASSERT_THAT(records(), Not(IsEmpty()));
    EXPECT_EQ(records().back()["evtType"], "last");
}

TEST_F(TallyfootTest, ErrnoIsLeftAsItWas) {
    errno = EDOM;
    start(); // looks for much that is not there yet
    EXPECT_EQ(errno, EDOM);
    std::filesystem::remove_all(root_ / "data");
    errno = EDOM;
    Tallyfoot::log("a", {}); // makes the folders again
    EXPECT_EQ(errno, EDOM);
    EXPECT_THAT(records(), SizeIs(1));
}

TEST(TallyfootShared, MakingTheSharedInstanceLeavesErrnoAsItWas) {
    errno = EDOM;
    Tallyfoot::appInfo(); // the first call of all
    EXPECT_EQ(errno, EDOM);
}

TEST_F(TallyfootTest, AThreadThatIsCancelledEndsAfterItsCalls) {
    int steps = 0;
    std::thread([&] {
        ::pthread_cancel(::pthread_self()); // heard where the thread may wait next
        Tallyfoot::setShowOutput(true);
        start();
        Tallyfoot::log("a", {});
        Tallyfoot::setShowOutput(false);
        ++steps;
        ::pthread_testcancel();
        ++steps;
    }).join();
    EXPECT_EQ(steps, 1);
    Tallyfoot::log("b", {}); // nothing is held
    EXPECT_THAT(records(), SizeIs(2));
}

TEST_F(TallyfootTest, EventsOfOneThreadKeepTheirOrderAmongManyThreads) {
    start();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread)
        threads.emplace_back([thread] {
            for (int event = 0; event < 200; ++event)
                Tallyfoot::log(EventType::action, {{LogAttribute::evtAction, std::to_string(thread)},
                                                   {LogAttribute::evtLabel, std::to_string(event)}});
        });
    for (auto& thread : threads) thread.join();
    std::map<std::string, int> next;
    for (const auto& record : records())
        EXPECT_EQ(record["evtLabel"], std::to_string(next[record["evtAction"].get<std::string>()]++));
    EXPECT_EQ(next.size(), 8U);
    for (const auto& [thread, count] : next) EXPECT_EQ(count, 200) << thread;
}

// A host whose last events come from its static objects and exit handlers.
TEST_F(TallyfootDeathTest, EventsAreRecordedUntilTheProcessEnds) {
    EXPECT_EXIT(
        {
            static const struct Early {
                ~Early() { Tallyfoot::log("static object made before", {}); }
            } early;
            start();
            static const struct Late {
                ~Late() { Tallyfoot::log("static object made after", {}); }
            } late;
            std::atexit([] { Tallyfoot::log("exit handler", {}); });
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
    std::vector<std::string> types;
    for (const auto& record : records()) types.push_back(record["evtType"]);
    EXPECT_THAT(types, ElementsAre("exit handler", "static object made after", "static object made before"));
}

} // namespace
} // namespace tallyfoot::testing
