#include "Support/ManualURLSession.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string_view>
#include <utility>

namespace tallyfoot::testing {

void ManualURLSession::dataTask(URLRequest request, DataTaskCompletion completion) {
    std::erase_if(request.headers, [](const auto& header) {
        return header.second.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos;
    });
    state_.modify([&](State& state) {
        state.requests.push_back(std::move(request));
        state.waiting.push_back(std::move(completion));
    });
}

std::size_t ManualURLSession::waiting() const {
    return state_.read([](const State& state) { return state.waiting.size(); });
}

std::vector<URLRequest> ManualURLSession::requests() const {
    return state_.read([](const State& state) { return state.requests; });
}

void ManualURLSession::answer(std::size_t place, Result<std::string> body) {
    DataTaskCompletion completion;
    state_.modify([&](State& state) {
        if (place >= state.waiting.size()) return;
        const auto answered = state.waiting.begin() + static_cast<std::ptrdiff_t>(place);
        completion = std::move(*answered);
        state.waiting.erase(answered);
    });
    ASSERT_TRUE(completion) << "no request waits for an answer";
    completion(std::move(body));
}

void ManualURLSession::answerWith(const std::string& statusCode, const std::vector<std::string>& success,
                                  const std::vector<std::string>& failure) {
    const nlohmann::json response{{"statusCode", statusCode},
                                  {"statusCodeInfo", "told by the test"},
                                  {"filename", "any.zip"},
                                  {"success", success},
                                  {"failure", failure}};
    answer(nlohmann::json{{"data", {{"response", response}}}}.dump());
}

} // namespace tallyfoot::testing
