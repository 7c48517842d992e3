#pragma once

#include "Collector/Connection.h"

#include "Tallyfoot/Platform/Exclusive.h"

#include <httplib.h>
#include <sys/socket.h>

#include <atomic>
#include <set>

namespace tallyfoot::collector {

// cpp-httplib's server on connections of our own. It parses and routes; the connection shows a handler
// what really came in, and ends it as the handler likes. A request's body arrives raw, whatever its
// Content-Type says.
class HTTPServer final : public httplib::Server {
public:
    HTTPServer();

    // The connection whose request the calling thread handles; only inside of a handler.
    static Connection& current();

    // Once it is bound: lets more clients wait to be accepted than the library does, which makes all
    // but a few of those that come at once try again a second later.
    void lengthenBacklog() { ::listen(svr_sock_, SOMAXCONN); }

    // Stops accepting, ends idle connections and lets running requests finish. Any thread.
    void shutDown();

private:
    bool process_and_close_socket(int socket) override;

    Exclusive<std::set<int>> sockets_;
    std::atomic<bool> shuttingDown_{false};
};

} // namespace tallyfoot::collector
