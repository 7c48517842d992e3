#include "Contracts/URLSessionHosts.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tallyfoot::testing {

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using namespace std::string_literals;

class URLSessionContract : public ::testing::TestWithParam<Implementation<URLSessionHost>> {
protected:
    URLRequest post(std::vector<std::string> body = {}) const {
        URLRequest request;
        request.url = host_->url();
        request.method = "POST";
        request.body = std::move(body);
        return request;
    }

    Result<std::string> fetch(URLRequest request) {
        Result<std::string> outcome = Error{"no completion came"};
        Occurrences completed;
        host_->session().dataTask(std::move(request), [&](Result<std::string> answer) {
            outcome = std::move(answer);
            completed.add();
        });
        EXPECT_TRUE(host_->waitFor(completed, 1));
        return outcome;
    }

    std::shared_ptr<URLSessionHost> host_ = GetParam().make();
};

// Says when it is released.
class Witness {
public:
    explicit Witness(Occurrences& released) : released_(released) {}
    ~Witness() { released_.add(); }
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

private:
    Occurrences& released_;
};

TEST_P(URLSessionContract, ARequestArrivesAsItIs) {
    auto request = post({"one\r\n", "", "\0two"s});
    request.headers = {{"Content-Type", "multipart/form-data; boundary=B"}, {"cookie", "a=\"b\"; c"}};
    ASSERT_TRUE(fetch(std::move(request)));
    const auto arrived = host_->arrived(0);
    EXPECT_EQ(arrived.method, "POST");
    EXPECT_THAT(arrived.headerLines, HasSubstr("\r\nContent-Type: multipart/form-data; boundary=B\r\n"));
    EXPECT_THAT(arrived.headerLines, HasSubstr("\r\ncookie: a=\"b\"; c\r\n"));
    EXPECT_EQ(arrived.body, "one\r\n\0two"s);
}

TEST_P(URLSessionContract, ALargeBodyArrivesWhole) {
    std::string large(3U << 20U, '\0');
    for (std::size_t at = 0; at < large.size(); ++at) large[at] = static_cast<char>(at * 31 >> 3U);
    ASSERT_TRUE(fetch(post({"head", large, "tail"})));
    EXPECT_TRUE(host_->arrived(0).body == "head" + large + "tail");
}

TEST_P(URLSessionContract, AHeaderThatWouldAddAnotherIsLeftOut) {
    auto request = post();
    request.headers = {
        {"A", "1\r\nX-Evil: 1"}, {"B", "2\nX-Evil: 2"}, {"C", "3\rX-Evil: 3"}, {"D", "4\0"s}, {"E", "5"}};
    ASSERT_TRUE(fetch(std::move(request)));
    const auto lines = host_->arrived(0).headerLines;
    for (const auto* piece : {"X-Evil", "\r\nA:", "\r\nB:", "\r\nC:", "\r\nD:"})
        EXPECT_THAT(lines, Not(HasSubstr(piece)));
    EXPECT_THAT(lines, HasSubstr("\r\nE: 5\r\n"));
}

TEST_P(URLSessionContract, TheAnswersBodyIsTheOutcome) {
    for (const auto& body : {"{\"a\":1}"s, ""s, "\0\xFF\r\n"s}) {
        host_->script(body);
        const auto outcome = fetch(post());
        ASSERT_TRUE(outcome) << outcome.error().description;
        EXPECT_EQ(outcome.value(), body);
    }
}

TEST_P(URLSessionContract, AFailureIsAnErrorWithAText) {
    host_->script(Error{"down"});
    const auto outcome = fetch(post());
    ASSERT_FALSE(outcome);
    EXPECT_FALSE(outcome.error().description.empty());
    EXPECT_TRUE(fetch(post())) << "the next one is sent";
}

TEST_P(URLSessionContract, TasksOfManyThreadsCompleteOnceEachAndOneAtATime) {
    constexpr int threadCount = 4;
    constexpr int tasksEach = 10;
    Occurrences completed;
    std::atomic<int> running{0};
    {
        std::vector<std::jthread> threads;
        threads.reserve(threadCount);
        for (int thread = 0; thread < threadCount; ++thread)
            threads.emplace_back([&] {
                for (int task = 0; task < tasksEach; ++task)
                    host_->session().dataTask(post({"x"}), [&](const Result<std::string>& answer) {
                        EXPECT_EQ(running.fetch_add(1), 0);
                        EXPECT_TRUE(answer);
                        running.fetch_sub(1);
                        completed.add();
                    });
            });
    }
    EXPECT_TRUE(host_->waitFor(completed, threadCount * tasksEach));
    ASSERT_TRUE(fetch(post()));
    EXPECT_EQ(completed.count(), threadCount * tasksEach);
}

TEST_P(URLSessionContract, ACompletionMayStartFurtherTasks) {
    Occurrences completed;
    std::function<void(int)> start = [&](int left) {
        host_->session().dataTask(post(), [&, left](const Result<std::string>&) {
            if (left > 1) start(left - 1);
            completed.add();
        });
    };
    start(5);
    EXPECT_TRUE(host_->waitFor(completed, 5));
}

TEST_P(URLSessionContract, ACompletionIsReleasedOnceItHasRun) {
    Occurrences released;
    host_->session().dataTask(post(), [witness = std::make_shared<Witness>(released)](const Result<std::string>&) {});
    EXPECT_TRUE(host_->waitFor(released, 1));
}

TEST_P(URLSessionContract, ReleasingItDropsItsTasksWithoutACompletion) {
    Occurrences released;
    Occurrences completed;
    host_->scriptSilence();
    host_->session().dataTask(
        post(), [&, witness = std::make_shared<Witness>(released)](const Result<std::string>&) { completed.add(); });
    host_->arrived(0);
    host_->takeSession().reset();
    EXPECT_TRUE(host_->waitFor(released, 1));
    EXPECT_EQ(completed.count(), 0);
}

TEST_P(URLSessionContract, ItMayBeReleasedByItsOwnCompletion) {
    Occurrences released;
    auto session = host_->takeSession();
    auto& raw = *session;
    raw.dataTask(post(), [session = std::move(session), witness = std::make_shared<Witness>(released)](
                             const Result<std::string>&) mutable { session.reset(); });
    EXPECT_TRUE(host_->waitFor(released, 1));
}

INSTANTIATE_TEST_SUITE_P(All, URLSessionContract, ::testing::Values(posixURLSession(), manualURLSession()),
                         nameOfImplementation);

} // namespace

} // namespace tallyfoot::testing
