#pragma once

#include "Collector/Changes.h"
#include "Collector/CollectorStore.h"
#include "Collector/FaultQueue.h"
#include "Collector/HTTPServer.h"
#include "Collector/UploadHandler.h"

#include "Tallyfoot/Platform/Result.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace tallyfoot::collector {

struct CollectorOptions {
    std::string host = "127.0.0.1";
    int port = 0; // 0: a free one
    std::string database = ":memory:";
    std::vector<Fault> faults;
    std::optional<std::uint64_t> randomFaults; // a seed
};

// A development server for uploads. POST to any path outside of /v1 is an upload; below /v1 a test
// asks what came and says what is to go wrong:
//   POST /v1/faults   {"faults": [{"kind": …}, …]}, one taken by each upload in turn; "clear": true drops
//                     those before, "random": seed lets chance decide once none is left
//   GET  /v1/events   ?type= &after= &accepted= &duplicate=
//   GET  /v1/uploads, /v1/problems, /v1/summary
//   POST /v1/expect   {"count", "type", "match", "timeoutMilliseconds", "after", "all"}: waits; 408 with
//                     the nearest misses
//   POST /v1/reset    forgets everything, faults too
//   GET  /healthz
class CollectorServer {
public:
    explicit CollectorServer(const CollectorOptions& options); // throws DatabaseError
    ~CollectorServer();
    CollectorServer(const CollectorServer&) = delete;
    CollectorServer& operator=(const CollectorServer&) = delete;

    // Serves from now on; gives the port.
    Result<int> start();
    // Lets running requests finish.
    void stop();

private:
    void addRoutes();
    void answerEvents(const httplib::Request& request, httplib::Response& response);
    void answerExpect(const httplib::Request& request, httplib::Response& response);
    void answerFaults(const httplib::Request& request, httplib::Response& response);
    void answerSummary(httplib::Response& response);

    CollectorOptions options_;
    CollectorStore store_;
    FaultQueue faults_;
    Changes changes_;
    UploadHandler uploads_;
    HTTPServer server_;
    std::thread thread_;
};

} // namespace tallyfoot::collector
