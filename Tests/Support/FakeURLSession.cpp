#include "Support/FakeURLSession.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <utility>

namespace tallyfoot::testing {

void FakeURLSession::dataTask(URLRequest request, DataTaskCompletion completion) {
    state_.modify([&](State& state) {
        state.requests.push_back(std::move(request));
        state.waiting.push_back(std::move(completion));
    });
}

std::size_t FakeURLSession::waiting() const {
    return state_.read([](const State& state) { return state.waiting.size(); });
}

std::vector<URLRequest> FakeURLSession::requests() const {
    return state_.read([](const State& state) { return state.requests; });
}

void FakeURLSession::answer(Result<std::string> body) {
    DataTaskCompletion completion;
    state_.modify([&](State& state) {
        if (state.waiting.empty()) return;
        completion = std::move(state.waiting.front());
        state.waiting.pop_front();
    });
    ASSERT_TRUE(completion) << "no request waits for an answer";
    completion(std::move(body));
}

void FakeURLSession::answerWith(const std::string& statusCode, const std::vector<std::string>& success,
                                const std::vector<std::string>& failure) {
    const nlohmann::json response{{"statusCode", statusCode},
                                  {"statusCodeInfo", "told by the test"},
                                  {"filename", "any.zip"},
                                  {"success", success},
                                  {"failure", failure}};
    answer(nlohmann::json{{"data", {{"response", response}}}}.dump());
}

} // namespace tallyfoot::testing
