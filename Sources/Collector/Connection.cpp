#include "Collector/Connection.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tallyfoot::collector {

namespace {

constexpr std::chrono::seconds patience{60}; // with a peer in the middle of a request or an answer
constexpr std::size_t largestHead = std::size_t{256} << 10U;

void describe(const sockaddr_storage& address, std::string& ip, int& port) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (address.ss_family == AF_INET) {
        sockaddr_in v4{};
        std::memcpy(&v4, &address, sizeof v4);
        ip = ::inet_ntop(AF_INET, &v4.sin_addr, text.data(), text.size()) == nullptr ? "" : text.data();
        port = ntohs(v4.sin_port);
    } else if (address.ss_family == AF_INET6) {
        sockaddr_in6 v6{};
        std::memcpy(&v6, &address, sizeof v6);
        ip = ::inet_ntop(AF_INET6, &v6.sin6_addr, text.data(), text.size()) == nullptr ? "" : text.data();
        port = ntohs(v6.sin6_port);
    }
}

} // namespace

Connection::~Connection() {
    if (ending_ == Ending::reset) {
        // No lingering: the kernel throws away what is unsent and tells the peer by a reset.
        const linger none{1, 0};
        ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &none, sizeof none);
    } else {
        ::shutdown(socket_, SHUT_RDWR);
    }
    ::close(socket_);
}

bool Connection::waitFor(short events, std::chrono::milliseconds time) const {
    pollfd descriptor{socket_, events, 0};
    int ready = 0;
    do {
        ready = ::poll(&descriptor, 1, static_cast<int>(time.count()));
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

bool Connection::waitForRequest(std::chrono::milliseconds time) {
    if (ending_ != Ending::open || writeFailed_) return false;
    return bufferStart_ < bufferEnd_ || waitFor(POLLIN, time);
}

void Connection::beginRequest() {
    head_.clear();
    headBegan_ = std::chrono::steady_clock::now();
    inHead_ = true;
    bodyLeft_.reset();
    onLostAnswer_ = nullptr;
}

void Connection::endRequest() {
    if (writeFailed_ && onLostAnswer_) onLostAnswer_();
}

bool Connection::is_readable() const { return bufferStart_ < bufferEnd_ || waitFor(POLLIN, patience); }

bool Connection::is_writable() const { return ending_ == Ending::open && waitFor(POLLOUT, patience); }

bool Connection::isHeadTooMuch() const {
    return inHead_ && (head_.size() >= largestHead || std::chrono::steady_clock::now() > headBegan_ + patience);
}

ssize_t Connection::read(char* bytes, size_t size) {
    if (isHeadTooMuch() || isBodyTooMuch()) {
        dropAtEnd();
        return -1;
    }
    if (bufferStart_ == bufferEnd_) {
        if (!waitFor(POLLIN, patience)) return -1;
        ssize_t count = 0;
        do {
            count = ::recv(socket_, buffer_.data(), buffer_.size(), 0);
        } while (count < 0 && errno == EINTR);
        if (count <= 0) return count;
        bufferStart_ = 0;
        bufferEnd_ = static_cast<std::size_t>(count);
    }
    const auto count = std::min(size, bufferEnd_ - bufferStart_);
    std::memcpy(bytes, buffer_.data() + bufferStart_, count);
    if (inHead_) head_.append(bytes, count);
    if (bodyLeft_) *bodyLeft_ -= std::min(*bodyLeft_, count);
    bufferStart_ += count;
    return static_cast<ssize_t>(count);
}

ssize_t Connection::write(const char* bytes, size_t size) {
    if (ending_ != Ending::open || !waitFor(POLLOUT, patience)) {
        writeFailed_ = true;
        return -1;
    }
    ssize_t count = 0;
    do {
        count = ::send(socket_, bytes, size, MSG_NOSIGNAL);
    } while (count < 0 && errno == EINTR);
    if (count < 0) writeFailed_ = true;
    return count;
}

void Connection::get_remote_ip_and_port(std::string& ip, int& port) const {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (::getpeername(socket_, reinterpret_cast<sockaddr*>(&address), &size) == 0) describe(address, ip, port);
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size) == 0) describe(address, ip, port);
}

} // namespace tallyfoot::collector
