#include "Support/ScriptedServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

namespace tallyfoot::testing {

namespace {

constexpr auto patience = std::chrono::seconds(30);
constexpr std::string_view headEnd = "\r\n\r\n";

std::size_t contentLength(std::string_view head) {
    constexpr std::string_view name = "\r\nContent-Length: ";
    const auto at = head.find(name);
    return at == head.npos ? 0 : std::stoul(std::string(head.substr(at + name.size(), 20)));
}

} // namespace

struct ScriptedServer::State {
    mutable std::mutex mutex;
    std::condition_variable changed;
    std::deque<Step> steps;
    std::vector<Request> requests;
    std::size_t connections = 0;
    std::size_t disconnections = 0;

    int listener = -1;
    std::array<int, 2> stop{-1, -1}; // readable once the server goes
    std::uint16_t port = 0;
    std::thread acceptor;
    std::vector<std::thread> workers; // the acceptor's own

    // False once the server goes or the time is over.
    bool waitFor(int descriptor, short events, int milliseconds = -1) const {
        std::array<pollfd, 2> polled{pollfd{descriptor, events, 0}, pollfd{stop[0], POLLIN, 0}};
        return ::poll(polled.data(), polled.size(), milliseconds) > 0 && polled[1].revents == 0;
    }

    void acceptAll() {
        while (waitFor(listener, POLLIN)) {
            const int connection = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
            if (connection < 0) continue;
            {
                const std::lock_guard lock(mutex);
                ++connections;
            }
            workers.emplace_back([this, connection] { serve(connection); });
        }
        for (auto& worker : workers) worker.join();
    }

    void serve(int connection) {
        std::string unread;
        while (serveOne(connection, unread)) {
        }
        ::close(connection);
        const std::lock_guard lock(mutex);
        ++disconnections;
        changed.notify_all();
    }

    bool serveOne(int connection, std::string& unread) {
        while (unread.find(headEnd) == unread.npos)
            if (!receive(connection, unread)) return false;
        Request request;
        const auto headSize = unread.find(headEnd) + headEnd.size();
        request.head = unread.substr(0, headSize - 2);
        unread.erase(0, headSize);
        const auto step = nextStep();
        if (step.reading == Reading::everything && !readBody(connection, unread, request)) return false;
        if (step.reading == Reading::dropsBody && !dropBody(connection, unread, request)) return false;
        note(std::move(request));
        return answer(connection, step) && end(connection, step.ending);
    }

    bool readBody(int connection, std::string& unread, Request& request) const {
        const auto length = contentLength(request.head);
        while (unread.size() < length)
            if (!receive(connection, unread)) return false;
        request.body = unread.substr(0, length);
        unread.erase(0, length);
        return true;
    }

    bool dropBody(int connection, std::string& unread, const Request& request) const {
        for (auto left = contentLength(request.head); left > unread.size();) {
            left -= unread.size();
            unread.clear();
            if (!receive(connection, unread)) return false;
        }
        unread.clear(); // nobody pipelines
        return true;
    }

    bool receive(int connection, std::string& into) const {
        if (!waitFor(connection, POLLIN)) return false;
        std::array<char, 65536> buffer;
        const auto count = ::recv(connection, buffer.data(), buffer.size(), 0);
        if (count <= 0) return false;
        into.append(buffer.data(), static_cast<std::size_t>(count));
        return true;
    }

    Step nextStep() {
        const std::lock_guard lock(mutex);
        if (steps.empty()) return {response("{}"), {}, {}, {}};
        auto step = std::move(steps.front());
        steps.pop_front();
        return step;
    }

    void note(Request request) {
        const std::lock_guard lock(mutex);
        requests.push_back(std::move(request));
        changed.notify_all();
    }

    bool answer(int connection, const Step& step) const {
        std::string_view rest = step.answer;
        while (!rest.empty()) {
            if (step.pace.count() > 0 && isStopped(step.pace)) return false;
            if (!waitFor(connection, POLLOUT)) return false;
            const auto piece = step.pace.count() > 0 ? rest.substr(0, 1) : rest;
            const auto count = ::send(connection, piece.data(), piece.size(), MSG_NOSIGNAL);
            if (count < 0) return false;
            rest.remove_prefix(static_cast<std::size_t>(count));
        }
        return true;
    }

    bool isStopped(std::chrono::milliseconds within) const {
        pollfd polled{stop[0], POLLIN, 0};
        return ::poll(&polled, 1, static_cast<int>(within.count())) > 0;
    }

    bool end(int connection, Ending ending) const {
        switch (ending) {
        case Ending::keepsOpen: return true;
        case Ending::closes: return false;
        case Ending::resets: {
            const linger atOnce{1, 0};
            ::setsockopt(connection, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
            return false;
        }
        case Ending::fallsSilent: waitFor(connection, POLLRDHUP); return false;
        }
        return false;
    }
};

bool ScriptedServer::Request::hasLine(std::string_view line) const {
    return head.find("\r\n" + std::string(line) + "\r\n") != head.npos;
}

std::string ScriptedServer::Request::path() const {
    const auto from = head.find(' ') + 1;
    return head.substr(from, head.find(' ', from) - from);
}

ScriptedServer::ScriptedServer() : state_(std::make_shared<State>()) {
    state_->listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const name = reinterpret_cast<sockaddr*>(&address);
    if (::bind(state_->listener, name, length) != 0 || ::listen(state_->listener, 64) != 0
        || ::getsockname(state_->listener, name, &length) != 0 || ::pipe2(state_->stop.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no server on the loopback interface");
    state_->port = ntohs(address.sin_port);
    state_->acceptor = std::thread([state = state_.get()] { state->acceptAll(); });
}

ScriptedServer::~ScriptedServer() {
    ::close(state_->stop[1]);
    state_->acceptor.join();
    ::close(state_->stop[0]);
    ::close(state_->listener);
}

std::uint16_t ScriptedServer::port() const noexcept { return state_->port; }

std::string ScriptedServer::url(std::string_view path) const {
    return "http://127.0.0.1:" + std::to_string(port()) + std::string(path);
}

void ScriptedServer::script(Step step) {
    const std::lock_guard lock(state_->mutex);
    state_->steps.push_back(std::move(step));
}

std::string ScriptedServer::response(std::string_view body, std::string_view status, std::string_view headerLines) {
    return "HTTP/1.1 " + std::string(status) + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n"
           + std::string(headerLines) + "\r\n" + std::string(body);
}

ScriptedServer::Request ScriptedServer::request(std::size_t index) {
    std::unique_lock lock(state_->mutex);
    if (state_->changed.wait_for(lock, patience, [&] { return state_->requests.size() > index; }))
        return state_->requests[index];
    ADD_FAILURE() << "no request number " << index << " came";
    return {};
}

void ScriptedServer::waitForDisconnections(std::size_t count) {
    std::unique_lock lock(state_->mutex);
    EXPECT_TRUE(state_->changed.wait_for(lock, patience, [&] { return state_->disconnections >= count; }))
        << state_->disconnections << " of " << count << " connections ended";
}

std::size_t ScriptedServer::requestCount() const {
    const std::lock_guard lock(state_->mutex);
    return state_->requests.size();
}

std::size_t ScriptedServer::connectionCount() const {
    const std::lock_guard lock(state_->mutex);
    return state_->connections;
}

} // namespace tallyfoot::testing
