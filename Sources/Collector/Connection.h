#pragma once

#include <httplib.h>

#include <array>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace tallyfoot::collector {

// One client's connection, under the HTTP server's parser. It keeps the head of the current request
// as it came, and can end the connection in ways that a server library does not offer. A head that
// is too large, or too long on its way, ends it too. Belongs to the thread that serves it.
class Connection final : public httplib::Stream {
public:
    explicit Connection(int socket) noexcept : socket_(socket) {}
    ~Connection() override; // closes

    // --- For the loop that serves it ---
    bool waitForRequest(std::chrono::milliseconds patience); // false: none came
    void beginRequest();
    void endHead() { inHead_ = false; }                      // what is read from now on is body
    void boundBody(std::size_t bytes) { bodyLeft_ = bytes; } // a larger one ends the connection
    void endRequest();

    // --- For a request's handler ---
    const std::string& head() const { return head_; }
    bool isBodyTooMuch() const { return bodyLeft_ == 0; }
    // Nothing is written any more, and the connection ends after the request: with a TCP reset, or quietly.
    void resetAtEnd() { ending_ = Ending::reset; }
    void dropAtEnd() { ending_ = Ending::dropped; }
    // Called after the request if its answer could not be written.
    void onLostAnswer(std::function<void()> callback) { onLostAnswer_ = std::move(callback); }

    // --- httplib::Stream ---
    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* bytes, size_t size) override;
    ssize_t write(const char* bytes, size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return socket_; }

private:
    enum class Ending { open, dropped, reset };
    bool waitFor(short events, std::chrono::milliseconds patience) const;
    bool isHeadTooMuch() const;

    int socket_;
    std::array<char, 16384> buffer_{};
    std::size_t bufferStart_ = 0;
    std::size_t bufferEnd_ = 0;
    bool inHead_ = false;
    std::string head_;
    std::chrono::steady_clock::time_point headBegan_;
    std::optional<std::size_t> bodyLeft_; // none: unbounded
    Ending ending_ = Ending::open;
    bool writeFailed_ = false;
    std::function<void()> onLostAnswer_;
};

} // namespace tallyfoot::collector
