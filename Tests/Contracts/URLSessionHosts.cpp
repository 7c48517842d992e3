#include "Contracts/URLSessionHosts.h"

#include "Support/ManualURLSession.h"
#include "Support/RequestBody.h"
#include "Support/ScriptedServer.h"

#include "Tallyfoot/Platform/Posix/PosixURLSession.h"

#include <deque>
#include <utility>

namespace tallyfoot::testing {

namespace {

class PosixSessionHost final : public URLSessionHost {
public:
    URLSession& session() override { return *session_; }
    std::shared_ptr<URLSession> takeSession() override { return std::move(session_); }
    std::string url() const override { return server_.url(); }

    void script(Result<std::string> answer) override {
        if (answer)
            server_.script({.answer = ScriptedServer::response(answer.value())});
        else
            server_.script(
                {.answer = "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{", .ending = ScriptedServer::Ending::closes});
    }

    void scriptSilence() override { server_.script({.answer = {}, .ending = ScriptedServer::Ending::fallsSilent}); }

    Arrived arrived(std::size_t index) override {
        const auto request = server_.request(index);
        return {request.head.substr(0, request.head.find(' ')), request.head.substr(request.head.find("\r\n")),
                request.body};
    }

    bool waitFor(const Occurrences& completions, int count) override { return completions.waitFor(count); }

private:
    ScriptedServer server_;
    std::shared_ptr<URLSession> session_ = std::make_shared<PosixURLSession>();
};

class ManualSessionHost final : public URLSessionHost {
public:
    URLSession& session() override { return *owned_; }
    std::shared_ptr<URLSession> takeSession() override { return std::move(owned_); }
    std::string url() const override { return "http://127.0.0.1/upload"; }
    void script(Result<std::string> answer) override { answers_.push_back(std::move(answer)); }
    void scriptSilence() override {} // nobody is answered unless the test waits for it

    Arrived arrived(std::size_t index) override {
        const auto request = session_.requests().at(index);
        Arrived arrived{request.method, "\r\n", bodyOf(request)};
        for (const auto& [name, value] : request.headers)
            arrived.headerLines.append(name).append(": ").append(value).append("\r\n");
        return arrived;
    }

    bool waitFor(const Occurrences& completions, int count) override {
        while (completions.count() < count && !released_.expired() && session_.waiting() > 0) {
            Result<std::string> answer = std::string("{}");
            if (!answers_.empty()) {
                answer = std::move(answers_.front());
                answers_.pop_front();
            }
            session_.answer(std::move(answer)); // may release it
        }
        return completions.count() >= count;
    }

private:
    std::shared_ptr<ManualURLSession> owned_ = std::make_shared<ManualURLSession>();
    std::weak_ptr<ManualURLSession> released_ = owned_;
    ManualURLSession& session_ = *owned_;
    std::deque<Result<std::string>> answers_;
};

} // namespace

Implementation<URLSessionHost> posixURLSession() {
    return {"Posix", [] { return std::make_shared<PosixSessionHost>(); }};
}

Implementation<URLSessionHost> manualURLSession() {
    return {"Manual", [] { return std::make_shared<ManualSessionHost>(); }};
}

} // namespace tallyfoot::testing
