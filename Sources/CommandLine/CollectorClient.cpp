#include "CommandLine/CollectorClient.h"

#include <httplib.h>

namespace tallyfoot::commandline {

namespace {

// Longer than any wait that is asked of the collector.
constexpr std::chrono::seconds longestAnswer{300};

httplib::Client client(int port) {
    httplib::Client made("127.0.0.1", port);
    made.set_read_timeout(longestAnswer);
    made.set_tcp_nodelay(true);
    return made;
}

Result<CollectorClient::Reply> reply(const std::string& path, const httplib::Result& result) {
    if (!result) return Error{path + ": " + httplib::to_string(result.error())};
    auto body = nlohmann::json::parse(result->body, nullptr, false);
    if (body.is_discarded()) return Error{path + ": not JSON: " + result->body};
    return CollectorClient::Reply{result->status, std::move(body)};
}

} // namespace

Result<CollectorClient::Reply> CollectorClient::get(const std::string& path) const {
    return reply(path, client(port_).Get(path));
}

Result<CollectorClient::Reply> CollectorClient::post(const std::string& path, const nlohmann::json& body) const {
    return reply(path, client(port_).Post(path, body.dump(), "application/json"));
}

} // namespace tallyfoot::commandline
