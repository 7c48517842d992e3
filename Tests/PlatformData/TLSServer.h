#pragma once

#include "Support/TemporaryFolder.h"

#include <sys/types.h>

#include <string>

namespace tallyfoot::testing {

// An HTTPS server in a process of its own, with a certificate that nobody knows, for "127.0.0.1"
// or the name given. It answers every GET with a page. Needs the openssl command.
class TLSServer {
public:
    static bool isAvailable();

    explicit TLSServer(const std::string& name = "IP:127.0.0.1");
    ~TLSServer();
    TLSServer(const TLSServer&) = delete;
    TLSServer& operator=(const TLSServer&) = delete;

    std::string url() const { return "https://127.0.0.1:" + port_ + "/"; }
    std::string certificatePath() const { return folder_ / "certificate.pem"; }

private:
    TemporaryFolder folder_;
    pid_t process_ = -1;
    std::string port_;
};

} // namespace tallyfoot::testing
