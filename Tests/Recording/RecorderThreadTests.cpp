#include "Recording/RecorderHost.h"

#include "Tallyfoot/Events/StoredRecord.h"
#include "Tallyfoot/Platform/URLSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::IsEmpty;

// Requests wait until some thread answers them; that thread runs the completion, as a session's does.
class AnsweredSession final : public URLSession {
public:
    void dataTask(URLRequest request, DataTaskCompletion completion) override {
        const std::lock_guard lock(mutex_);
        waiting_.emplace_back(std::move(request), std::move(completion));
        changed_.notify_one();
    }

    // The oldest request. False when none came in time.
    bool answer(std::chrono::milliseconds patience,
                const std::function<Result<std::string>(const URLRequest&)>& answer) {
        std::unique_lock lock(mutex_);
        if (!changed_.wait_for(lock, patience, [&] { return !waiting_.empty(); })) return false;
        const auto [request, completion] = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        completion(answer(request));
        return true;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::pair<URLRequest, DataTaskCompletion>> waiting_;
};

std::string statusOnly(const std::string& code) {
    return nlohmann::json{{"data", {{"response", {{"statusCode", code}}}}}}.dump();
}

class RecorderThreads : public ::testing::Test {
protected:
    RecorderThreads() {
        // So that the host settles at its end: an upload that still runs then would outlive what it uses.
        host.dispatch =
            std::make_shared<ManualDispatch>(ManualDispatch::Options{.realQueues = true, .clock = host.clock});
        host.services.dispatch = host.dispatch;
        host.services.makeURLSession = [this] { return session; };
        host.start([this] { return authenticate(); });
    }

    // As a host that makes use of the library from inside its closure.
    std::shared_ptr<Authentication> authenticate() {
        if (host.recorder) {
            log();
            host.recorder->triggerUpload();
            switchApplication();
            log();
        }
        return std::make_shared<Authentication>("user-1", "token-1");
    }

    void log() {
        const auto label = std::to_string(++logged);
        std::string line = nlohmann::json{{"evtLabel", label}}.dump();
        makeStoredRecord(line, {});
        host.recorder->record(line);
    }

    void switchApplication() {
        static constexpr std::array names{"Shop", "Bank", "Cafe"};
        host.recorder->switchApplication(application(names[++switched % names.size()]));
    }

    bool accept(std::chrono::milliseconds patience) {
        return session->answer(patience, [this](const URLRequest& request) -> Result<std::string> {
            const std::lock_guard lock(mutex);
            for (auto& label : sentEvents(request)) arrived.insert(std::move(label));
            return statusOnly("200");
        });
    }

    bool refuse(unsigned how) {
        return session->answer(0ms, [how](const URLRequest&) -> Result<std::string> {
            switch (how % 4) {
            case 0: return statusOnly("10000003");
            case 1: return Error{"connection reset"};
            case 2: return std::string("thanks");
            default: return std::string(R"({"data":{"response":{"statusCode":1,"failure":["another.log"]}}})");
            }
        });
    }

    std::set<std::string> missing() {
        const std::lock_guard lock(mutex);
        std::set<std::string> labels;
        for (int label = 1; label <= logged; ++label)
            if (!arrived.contains(std::to_string(label))) labels.insert(std::to_string(label));
        return labels;
    }

    RecorderHost host;
    std::shared_ptr<AnsweredSession> session = std::make_shared<AnsweredSession>();
    std::atomic<int> logged = 0;
    std::atomic<unsigned> switched = 0;
    std::mutex mutex;
    std::set<std::string> arrived;
};

TEST_F(RecorderThreads, WhoeverCallsWhatNothingHangsAndEveryEventArrives) {
    std::atomic<bool> isOver = false;
    const auto repeat = [&](auto what) {
        return std::thread([&isOver, what]() mutable {
            while (!isOver) what();
        });
    };
    std::array others{repeat([&] { host.recorder->triggerUpload(); }), repeat([&] { switchApplication(); }),
                      repeat([&] { accept(1ms); }), repeat([&, how = 0U]() mutable { refuse(how++); }),
                      repeat([&, how = 2U]() mutable { refuse(how++); })};
    std::array<std::thread, 4> loggers;
    for (auto& logger : loggers)
        logger = std::thread([&] {
            for (int event = 0; event < 150; ++event) log();
        });
    for (auto& logger : loggers) logger.join();
    isOver = true;
    for (auto& other : others) other.join();

    for (const auto end = std::chrono::steady_clock::now() + 60s;
         !missing().empty() && std::chrono::steady_clock::now() < end;) {
        switchApplication(); // sends what other applications have left
        host.recorder->triggerUpload();
        while (accept(50ms)) {
        }
    }
    EXPECT_THAT(missing(), IsEmpty());
    EXPECT_EQ(arrived.size(), static_cast<std::size_t>(logged)) << "events that nobody logged";
}

} // namespace
} // namespace tallyfoot::testing
