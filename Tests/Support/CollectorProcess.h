#pragma once

#include "CommandLine/ChildProcess.h"
#include "CommandLine/CollectorClient.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <string>
#include <vector>

namespace tallyfoot::testing {

// A collector in a process of its own, on a free port of this machine; gone with the object. What
// should not fail fails the test.
class CollectorProcess {
public:
    using Reply = commandline::CollectorClient::Reply;

    explicit CollectorProcess(const std::vector<std::string>& arguments = {}); // of `tallyfoot collect`

    int port() const { return port_; }
    std::string url() const { return url_; } // where uploads go
    std::string url(const std::string& path) const;

    // One object a fault, each taken by one upload: {{{"kind", "status"}, {"statusCode", "10000003"}}}.
    void queueFaults(const nlohmann::json& faults);

    nlohmann::json events(const std::string& query = ""); // every stored record: "type=action&after=7"
    nlohmann::json confirmed();                           // accepted events, each once
    nlohmann::json uploads();
    nlohmann::json problems();
    nlohmann::json summary();

    // Waits on the collector. Status 200 with "events"; or 408 with "count" and "nearest".
    Reply expect(const nlohmann::json& request);
    // The same with a failure of the test, and the nearest misses in its message.
    nlohmann::json expectEvents(std::size_t count, const nlohmann::json& match = nlohmann::json::object(),
                                std::chrono::milliseconds timeout = std::chrono::seconds(30));

    void reset();
    void kill();     // at once, as a server that dies
    int terminate(); // politely; its exit status

    Reply get(const std::string& path);
    Reply post(const std::string& path, const nlohmann::json& body);

private:
    commandline::ChildProcess process_;
    int port_ = 0;
    std::string url_;
};

} // namespace tallyfoot::testing
