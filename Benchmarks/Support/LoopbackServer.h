#pragma once

#include <sys/types.h>

#include <string>

namespace tallyfoot::benchmarks {

// Takes every upload on a loopback port and confirms it, in a process of its own, so that its work
// is in no measurement of ours. Make it before the first thread.
class LoopbackServer {
public:
    LoopbackServer();
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    const std::string& url() const noexcept { return url_; }
    pid_t process() const noexcept { return process_; }

private:
    pid_t process_ = -1;
    std::string url_;
};

} // namespace tallyfoot::benchmarks
