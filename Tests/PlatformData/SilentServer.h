#pragma once

#include "Tallyfoot/Platform/Posix/FileDescriptor.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <string>

namespace tallyfoot::testing {

// Answers nobody, and has no thread that would open anything.
class SilentServer {
public:
    SilentServer() {
        sockaddr_in address{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
        auto* const name = reinterpret_cast<sockaddr*>(&address);
        socklen_t length = sizeof address;
        EXPECT_EQ(::bind(listener_.number(), name, length), 0);
        EXPECT_EQ(::listen(listener_.number(), 1), 0);
        EXPECT_EQ(::getsockname(listener_.number(), name, &length), 0);
        port_ = ntohs(address.sin_port);
    }

    int port() const { return port_; }
    std::string url() const { return "http://127.0.0.1:" + std::to_string(port_) + "/"; }
    FileDescriptor accept() { return FileDescriptor(::accept(listener_.number(), nullptr, nullptr)); }
    void close() { listener_ = {}; }

private:
    FileDescriptor listener_{::socket(AF_INET, SOCK_STREAM, 0)};
    int port_ = 0;
};

} // namespace tallyfoot::testing
