#include "Collector/HTTPServer.h"

#include "Collector/WorkerPool.h"

#include <sys/socket.h>

namespace tallyfoot::collector {

namespace {

constexpr std::chrono::seconds idlePatience{30};

thread_local Connection* currentConnection = nullptr;

} // namespace

HTTPServer::HTTPServer() {
    new_task_queue = [] { return new WorkerPool; };
    // The library's own choice shares a port between processes, which would split the uploads.
    set_socket_options([](socket_t socket) {
        const int yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    set_tcp_nodelay(true);
}

Connection& HTTPServer::current() { return *currentConnection; }

bool HTTPServer::process_and_close_socket(int socket) {
    sockets_.modify([&](std::set<int>& sockets) { sockets.insert(socket); });
    {
        Connection connection(socket);
        currentConnection = &connection;
        bool open = true;
        while (open && !shuttingDown_ && connection.waitForRequest(idlePatience)) {
            connection.beginRequest();
            bool clientCloses = false;
            open = process_request(connection, false, clientCloses, [&](httplib::Request& request) {
                connection.endHead();
                // The library would wait for the connection's end, as for an answer. Such a request has no body.
                if (!request.has_header("Content-Length") && !request.has_header("Transfer-Encoding"))
                    request.set_header("Content-Length", "0");
                // The library knows a body's size beforehand or not at all.
                if (request.has_header("Transfer-Encoding")) connection.boundBody(payload_max_length_);
                // Otherwise the library would take a form's body apart by rules of its own.
                request.headers.erase("Content-Type");
                request.headers.erase("Content-Encoding");
            });
            connection.endRequest();
            open = open && !clientCloses;
        }
        currentConnection = nullptr;
        // Before it is closed: its number may be given to the next connection at once.
        sockets_.modify([&](std::set<int>& sockets) { sockets.erase(socket); });
    }
    return true;
}

void HTTPServer::shutDown() {
    shuttingDown_ = true;
    stop();
    sockets_.modify([](std::set<int>& sockets) {
        for (const int socket : sockets) ::shutdown(socket, SHUT_RD);
    });
}

} // namespace tallyfoot::collector
