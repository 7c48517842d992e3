#pragma once

#include "Tallyfoot/Platform/Posix/PosixURLSession.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <utility>

namespace tallyfoot::testing {

// A session whose answers a test waits for.
class SessionHost {
public:
    using Answer = std::future<Result<std::string>>;

    Answer start(URLRequest request) {
        auto promise = std::make_shared<std::promise<Result<std::string>>>();
        auto answer = promise->get_future();
        session_->dataTask(std::move(request),
                           [promise](Result<std::string> result) { promise->set_value(std::move(result)); });
        return answer;
    }

    static Result<std::string> wait(Answer& answer) {
        if (answer.wait_for(std::chrono::seconds(30)) == std::future_status::ready) return answer.get();
        ADD_FAILURE() << "no completion came";
        return Error{"no completion came"};
    }

    Result<std::string> fetch(URLRequest request) {
        auto answer = start(std::move(request));
        return wait(answer);
    }

    PosixURLSession& session() { return *session_; }
    void release() { session_.reset(); }

private:
    std::unique_ptr<PosixURLSession> session_ = std::make_unique<PosixURLSession>();
};

inline URLRequest post(std::string url, std::string body = "hello") {
    URLRequest request;
    request.url = std::move(url);
    request.method = "POST";
    request.headers = {{"Content-Type", "text/plain"}};
    request.body = {std::move(body)};
    return request;
}

inline void expectBody(const Result<std::string>& result, const std::string& body) {
    if (result)
        EXPECT_EQ(result.value(), body);
    else
        ADD_FAILURE() << result.error().description;
}

inline void expectError(const Result<std::string>& result, const std::string& piece = "") {
    if (result) {
        ADD_FAILURE() << "answered: " << result.value().substr(0, 200);
        return;
    }
    EXPECT_FALSE(result.error().description.empty());
    EXPECT_NE(result.error().description.find(piece), std::string::npos) << result.error().description;
}

} // namespace tallyfoot::testing
