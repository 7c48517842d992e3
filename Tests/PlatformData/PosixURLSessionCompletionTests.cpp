#include "PlatformData/PosixURLSessionTest.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdlib>
#include <future>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <utility>
#include <vector>

// How a task ends, and how it ends with its session or with the process.
namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;
using Ending = ScriptedServer::Ending;

TEST_F(PosixURLSessionTest, CompletionsRunOnOneThreadOneAtATimeAndOnce) {
    constexpr int tasks = 40;
    std::mutex mutex;
    std::condition_variable changed;
    std::set<std::thread::id> threads;
    std::vector<int> calls(tasks, 0);
    int done = 0;
    std::atomic<int> running{0};
    for (int task = 0; task < tasks; ++task)
        host.session().dataTask(post(task % 4 == 0 ? "no such path" : server.url()), [&, task](Result<std::string>) {
            EXPECT_EQ(running.fetch_add(1), 0);
            const std::lock_guard lock(mutex);
            threads.insert(std::this_thread::get_id());
            ++calls[static_cast<std::size_t>(task)];
            ++done;
            running.fetch_sub(1);
            changed.notify_all();
        });
    std::unique_lock lock(mutex);
    ASSERT_TRUE(changed.wait_for(lock, 30s, [&] { return done == tasks; }));
    EXPECT_EQ(threads.size(), 1u);
    EXPECT_FALSE(threads.contains(std::this_thread::get_id()));
    EXPECT_EQ(calls, std::vector<int>(tasks, 1));
}

// Says when it is released, so that a test can wait for it.
class Witness {
public:
    explicit Witness(std::promise<void>& released) : released_(released) {}
    ~Witness() { released_.set_value(); }
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

private:
    std::promise<void>& released_;
};

TEST_F(PosixURLSessionTest, ReleasingTheSessionDropsItsTasksWithoutACompletion) {
    std::promise<void> released;
    std::atomic<bool> completed{false};
    server.script({"", Ending::fallsSilent, {}, {}});
    host.session().dataTask(post(server.url()), [&completed, witness = std::make_shared<Witness>(released)](
                                                    const Result<std::string>&) { completed = true; });
    server.request(0);
    host.release();
    ASSERT_EQ(released.get_future().wait_for(30s), std::future_status::ready);
    server.waitForDisconnections(1);
    EXPECT_FALSE(completed);
}

TEST_F(PosixURLSessionTest, ReleasingTheSessionDropsWhatIsWaiting) {
    for (int task = 0; task < 6; ++task) server.script({"", Ending::fallsSilent, {}, {}});
    std::atomic<int> completed{0};
    for (int task = 0; task < 6; ++task)
        host.session().dataTask(post(server.url()), [&](const Result<std::string>&) { ++completed; });
    server.request(5);
    std::promise<void> released;
    host.session().dataTask(post(server.url()), [&completed, witness = std::make_shared<Witness>(released)](
                                                    const Result<std::string>&) { ++completed; });
    host.release();
    ASSERT_EQ(released.get_future().wait_for(30s), std::future_status::ready);
    server.waitForDisconnections(6);
    EXPECT_EQ(completed, 0);
}

TEST_F(PosixURLSessionTest, TheSessionMayBeReleasedByItsOwnCompletion) {
    auto session = std::make_shared<PosixURLSession>();
    std::promise<void> first;
    std::promise<void> secondReleased;
    std::atomic<bool> secondCompleted{false};
    auto* const raw = session.get();
    server.script({"", Ending::fallsSilent, {}, {}});
    raw->dataTask(post(server.url()), [&, witness = std::make_shared<Witness>(secondReleased)](
                                          const Result<std::string>&) { secondCompleted = true; });
    server.request(0);
    raw->dataTask(post(server.url()), [&, session = std::move(session)](const Result<std::string>&) mutable {
        session.reset();
        first.set_value();
    });
    ASSERT_EQ(first.get_future().wait_for(30s), std::future_status::ready);
    ASSERT_EQ(secondReleased.get_future().wait_for(30s), std::future_status::ready);
    EXPECT_FALSE(secondCompleted);
}

TEST_F(PosixURLSessionTest, EveryTaskOfAReleasedSessionEndsOnceOrIsDropped) {
    for (int round = 0; round < 30; ++round) {
        constexpr int tasks = 10;
        std::vector<std::atomic<int>> calls(tasks);
        std::vector<std::promise<void>> released(tasks);
        const auto before = server.requestCount();
        auto session = std::make_unique<PosixURLSession>();
        for (std::size_t task = 0; task < tasks; ++task)
            session->dataTask(post(server.url()), [&calls, task, witness = std::make_shared<Witness>(released[task])](
                                                      const Result<std::string>&) { ++calls[task]; });
        if (round % 3 == 0) server.request(before);
        session.reset();
        for (std::size_t task = 0; task < tasks; ++task) {
            ASSERT_EQ(released[task].get_future().wait_for(30s), std::future_status::ready);
            EXPECT_LE(calls[task], 1);
        }
    }
}

using PosixURLSessionDeathTest = PosixURLSessionTest;

TEST_F(PosixURLSessionDeathTest, TheProcessEndsWithAnUploadUnderWay) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            ScriptedServer silent;
            static auto& session = *new PosixURLSession;
            silent.script({"", Ending::fallsSilent, {}, {}});
            session.dataTask(post(silent.url()), [](const Result<std::string>&) {});
            silent.request(0);
            std::exit(7);
        },
        ::testing::ExitedWithCode(7), "");
}

TEST_F(PosixURLSessionDeathTest, ACompletionMayEndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            static auto& another = *new ScriptedServer;
            static auto& session = *new PosixURLSession;
            session.dataTask(post(another.url()), [](const Result<std::string>&) { std::exit(7); });
            std::promise<void>().get_future().wait();
        },
        ::testing::ExitedWithCode(7), "");
}

} // namespace
} // namespace tallyfoot::testing
