#include "Support/LoopbackServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tallyfoot::benchmarks {

namespace {

constexpr std::string_view confirmation =
    R"({"data":{"response":{"statusCode":"200","statusCodeInfo":"","filename":"","success":[],"failure":[]}}})";

// One client: reads a request of known length, answers, reads the next. Keeps nothing of the body.
class Connection {
public:
    explicit Connection(int socket) : socket_(socket) {}
    int socket() const noexcept { return socket_; }

    // False once the client has gone.
    bool serve() {
        const auto count = read(socket_, buffer_.data(), buffer_.size());
        if (count <= 0) return false;
        std::string_view bytes(buffer_.data(), static_cast<std::size_t>(count));
        while (!bytes.empty()) {
            if (missing_ == 0) {
                head_.append(bytes);
                const auto end = head_.find("\r\n\r\n");
                if (end == std::string::npos) return true;
                const auto surplus = head_.size() - (end + 4);
                bytes.remove_prefix(bytes.size() - surplus);
                missing_ = contentLength();
                head_.clear();
            }
            const auto taken = std::min(missing_, bytes.size());
            missing_ -= taken;
            bytes.remove_prefix(taken);
            if (missing_ == 0 && !answer()) return false;
        }
        return true;
    }

private:
    std::size_t contentLength() const {
        const char* field = strcasestr(head_.c_str(), "\r\ncontent-length:");
        return field == nullptr ? 0 : std::strtoull(field + std::strlen("\r\ncontent-length:"), nullptr, 10);
    }

    bool answer() const {
        std::string text = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: ";
        text += std::to_string(confirmation.size()) + "\r\n\r\n";
        text += confirmation;
        return write(socket_, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    }

    int socket_;
    std::string head_;
    std::size_t missing_ = 0;
    std::array<char, 256 * 1024> buffer_{};
};

[[noreturn]] void serveForEver(int listener) {
    prctl(PR_SET_PDEATHSIG, SIGKILL); // never outlives the benchmark
    std::vector<std::unique_ptr<Connection>> connections;
    for (;;) {
        std::vector<pollfd> ready{{listener, POLLIN, 0}};
        for (const auto& connection : connections) ready.push_back({connection->socket(), POLLIN, 0});
        if (poll(ready.data(), ready.size(), -1) < 0) continue;
        std::vector<std::unique_ptr<Connection>> kept;
        for (std::size_t index = 0; index < connections.size(); ++index) {
            if (ready[index + 1].revents == 0 || connections[index]->serve())
                kept.push_back(std::move(connections[index]));
            else
                close(connections[index]->socket());
        }
        connections = std::move(kept);
        if ((ready[0].revents & POLLIN) != 0) {
            if (const int client = accept(listener, nullptr, nullptr); client >= 0) {
                const int on = 1;
                setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
                connections.push_back(std::make_unique<Connection>(client));
            }
        }
    }
}

} // namespace

LoopbackServer::LoopbackServer() {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (listener < 0 || bind(listener, generic, length) != 0 || listen(listener, 16) != 0
        || getsockname(listener, generic, &length) != 0)
        throw std::runtime_error("no loopback port");
    url_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/upload";
    process_ = fork();
    if (process_ < 0) throw std::runtime_error("no process for the loopback server");
    if (process_ == 0) serveForEver(listener);
    close(listener);
}

LoopbackServer::~LoopbackServer() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

} // namespace tallyfoot::benchmarks
