#include "Support/CollectorProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <stdexcept>

namespace tallyfoot::testing {

namespace {

using commandline::ChildProcess;
using commandline::CollectorClient;
using nlohmann::json;

constexpr std::chrono::seconds patience{60};

ChildProcess start(const std::vector<std::string>& arguments) {
    std::vector<std::string> all{TALLYFOOT_TOOL, "collect", "--port", "0"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    auto started = ChildProcess::start(all);
    if (!started) throw std::runtime_error("no collector: " + started.error().description);
    return std::move(started).value();
}

CollectorProcess::Reply checked(Result<CollectorProcess::Reply> reply) {
    if (!reply) throw std::runtime_error("the collector does not answer: " + reply.error().description);
    return std::move(reply).value();
}

} // namespace

CollectorProcess::CollectorProcess(const std::vector<std::string>& arguments) : process_(start(arguments)) {
    const auto line = process_.readLine(patience);
    if (!line) throw std::runtime_error("the collector does not start");
    const auto listening = json::parse(*line);
    port_ = listening.at("port");
    url_ = listening.at("url");
}

std::string CollectorProcess::url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

CollectorProcess::Reply CollectorProcess::get(const std::string& path) {
    return checked(CollectorClient(port_).get(path));
}

CollectorProcess::Reply CollectorProcess::post(const std::string& path, const json& body) {
    return checked(CollectorClient(port_).post(path, body));
}

void CollectorProcess::queueFaults(const json& faults) {
    const auto reply = post("/v1/faults", {{"faults", faults}});
    EXPECT_EQ(reply.status, 200) << reply.body;
}

json CollectorProcess::events(const std::string& query) {
    return get("/v1/events" + (query.empty() ? "" : "?" + query)).body.at("events");
}

json CollectorProcess::confirmed() { return events("accepted=true&duplicate=false"); }

json CollectorProcess::uploads() { return get("/v1/uploads").body.at("uploads"); }

json CollectorProcess::problems() { return get("/v1/problems").body.at("problems"); }

json CollectorProcess::summary() { return get("/v1/summary").body; }

CollectorProcess::Reply CollectorProcess::expect(const json& request) { return post("/v1/expect", request); }

json CollectorProcess::expectEvents(std::size_t count, const json& match, std::chrono::milliseconds timeout) {
    const auto reply = expect({{"count", count}, {"match", match}, {"timeoutMilliseconds", timeout.count()}});
    EXPECT_EQ(reply.status, 200) << reply.body.dump(2);
    return reply.body.value("events", json::array());
}

void CollectorProcess::reset() { post("/v1/reset", json::object()); }

void CollectorProcess::kill() {
    process_.signal(SIGKILL);
    EXPECT_TRUE(process_.wait(patience));
}

int CollectorProcess::terminate() {
    process_.signal(SIGTERM);
    return process_.wait(patience).value_or(-1);
}

} // namespace tallyfoot::testing
