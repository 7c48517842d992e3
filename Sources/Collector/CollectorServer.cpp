#include "Collector/CollectorServer.h"

#include "Collector/ExpectRequest.h"
#include "Collector/JSONInput.h"
#include "Collector/JSONText.h"

#include <charconv>

namespace tallyfoot::collector {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr std::size_t largestBody = std::size_t{64} << 20U;

void answerText(httplib::Response& response, const std::string& text, int status = 200) {
    response.status = status;
    response.set_content(text, "application/json");
}

void answerJSON(httplib::Response& response, const ordered_json& value, int status = 200) {
    answerText(response, jsonText(value), status);
}

void answerError(httplib::Response& response, int status, const std::string& reason) {
    answerJSON(response, {{"error", reason}}, status);
}

// The record goes in as it is: parsing it and writing it again could change a number.
std::string eventText(const StoredEvent& event) {
    const auto truth = [](bool value) { return value ? "true" : "false"; };
    return R"({"id":)" + std::to_string(event.id) + R"(,"upload":)" + std::to_string(event.upload) + R"(,"file":)"
           + jsonString(event.file) + R"(,"evtId":)" + jsonString(event.evtId) + R"(,"evtType":)"
           + jsonString(event.evtType) + R"(,"accepted":)" + truth(event.accepted) + R"(,"duplicate":)"
           + truth(event.duplicate) + R"(,"record":)" + event.record + "}";
}

std::string eventList(const std::vector<StoredEvent>& events) {
    std::string text = "[";
    for (const auto& event : events) {
        if (text.size() > 1) text += ',';
        text += eventText(event);
    }
    return text + "]";
}

std::string missList(const std::vector<ExpectMatcher::Miss>& misses) {
    std::string text = "[";
    for (const auto& miss : misses) {
        if (text.size() > 1) text += ',';
        text += R"({"matched":)" + std::to_string(miss.matched) + R"(,"differences":)" + jsonText(miss.differences)
                + R"(,"event":)" + eventText(miss.event) + "}";
    }
    return text + "]";
}

std::optional<bool> truthParameter(const httplib::Request& request, const char* name) {
    if (!request.has_param(name)) return std::nullopt;
    const auto value = request.get_param_value(name);
    if (value != "true" && value != "false") throw std::invalid_argument(std::string(name) + " is true or false");
    return value == "true";
}

EventFilter filterOf(const httplib::Request& request) {
    EventFilter filter;
    if (request.has_param("type")) filter.type = request.get_param_value("type");
    if (request.has_param("after")) {
        const auto value = request.get_param_value("after");
        const auto* end = value.data() + value.size();
        const auto read = std::from_chars(value.data(), end, filter.after);
        if (read.ec != std::errc() || read.ptr != end) throw std::invalid_argument("after is an event's id");
    }
    filter.accepted = truthParameter(request, "accepted");
    filter.duplicate = truthParameter(request, "duplicate");
    return filter;
}

} // namespace

CollectorServer::CollectorServer(const CollectorOptions& options)
    : options_(options), store_(options.database), uploads_(store_, faults_, changes_) {
    faults_.append(options.faults);
    if (options.randomFaults) faults_.chooseAtRandom(*options.randomFaults);
    server_.set_payload_max_length(largestBody);
    addRoutes();
}

CollectorServer::~CollectorServer() { stop(); }

Result<int> CollectorServer::start() {
    int port = options_.port;
    if (port == 0) {
        port = server_.bind_to_any_port(options_.host);
    } else if (!server_.bind_to_port(options_.host, port)) {
        port = -1;
    }
    if (port < 0) {
        return Error{"cannot listen on " + options_.host + " port " + std::to_string(options_.port)};
    }
    server_.lengthenBacklog();
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    // It can be stopped only once it runs; clients are queued by the kernel already.
    while (!server_.is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return port;
}

void CollectorServer::stop() {
    if (!thread_.joinable()) return;
    changes_.stop();
    server_.shutDown();
    thread_.join();
}

void CollectorServer::addRoutes() {
    using Request = httplib::Request;
    using Response = httplib::Response;
    server_.Get("/healthz", [](const Request&, Response& response) { answerJSON(response, {{"status", "ok"}}); });
    server_.Get("/v1/events", [this](const Request& request, Response& response) { answerEvents(request, response); });
    server_.Get("/v1/uploads", [this](const Request&, Response& response) {
        answerJSON(response, {{"uploads", store_.uploads()}});
    });
    server_.Get("/v1/problems", [this](const Request&, Response& response) {
        answerJSON(response, {{"problems", store_.problems()}});
    });
    server_.Get("/v1/summary", [this](const Request&, Response& response) { answerSummary(response); });
    server_.Post("/v1/faults", [this](const Request& request, Response& response) { answerFaults(request, response); });
    server_.Post("/v1/expect", [this](const Request& request, Response& response) { answerExpect(request, response); });
    server_.Post("/v1/reset", [this](const Request&, Response& response) {
        store_.clear();
        faults_.clear();
        answerJSON(response, ordered_json::object());
    });
    server_.Post("(?!/v1(?:/|$)).*",
                 [this](const Request&, Response& response, const httplib::ContentReader& readContent) {
                     uploads_.handle(readContent, response);
                 });
    server_.set_exception_handler([](const Request&, Response& response, const std::exception_ptr& thrown) {
        try {
            std::rethrow_exception(thrown);
        } catch (const std::invalid_argument& failure) {
            answerError(response, 400, failure.what());
        } catch (const json::exception& failure) { // a member of the wrong kind
            answerError(response, 400, failure.what());
        } catch (const std::exception& failure) {
            answerError(response, 500, failure.what());
        }
    });
}

void CollectorServer::answerEvents(const httplib::Request& request, httplib::Response& response) {
    const auto events = store_.events(filterOf(request));
    answerText(response, R"({"events":)" + eventList(events) + "}");
}

void CollectorServer::answerExpect(const httplib::Request& request, httplib::Response& response) {
    const auto parsed = ExpectRequest::parse(request.body);
    if (!parsed) return answerError(response, 400, parsed.error().description);
    const auto& expected = parsed.value();
    const auto deadline = std::chrono::steady_clock::now() + expected.timeout;
    ExpectMatcher matcher(expected);
    auto filter = expected.filter();
    for (bool changed = true; changed && !matcher.isSatisfied();) {
        const auto before = changes_.count(); // first, so that no change slips by between the two
        matcher.add(store_.events(filter));
        filter.after = std::max(filter.after, matcher.last());
        if (!matcher.isSatisfied()) changed = changes_.waitPast(before, deadline);
    }
    auto text = R"({"count":)" + std::to_string(matcher.matches().size()) + R"(,"expected":)"
                + std::to_string(expected.count) + R"(,"events":)" + eventList(matcher.matches());
    if (!matcher.isSatisfied()) text += R"(,"nearest":)" + missList(matcher.nearestMisses());
    answerText(response, text + "}", matcher.isSatisfied() ? 200 : 408);
}

void CollectorServer::answerFaults(const httplib::Request& request, httplib::Response& response) {
    const auto description = parsedInput(request.body);
    if (!description.is_object()) return answerError(response, 400, "a JSON object is expected");
    std::vector<Fault> faults;
    const auto list = description.value("faults", json::array());
    if (!list.is_array()) return answerError(response, 400, "\"faults\" is a list");
    for (const auto& item : list) {
        auto parsed = Fault::parse(item);
        if (!parsed) return answerError(response, 400, parsed.error().description);
        faults.insert(faults.end(), parsed.value().begin(), parsed.value().end());
    }
    std::optional<std::uint64_t> seed;
    if (description.contains("random")) seed = wholeNumber<std::uint64_t>(description["random"]);
    if (description.value("clear", false)) faults_.clear();
    if (seed) faults_.chooseAtRandom(*seed);
    faults_.append(faults);
    answerJSON(response, {{"queued", faults_.size()}});
}

void CollectorServer::answerSummary(httplib::Response& response) {
    const auto counts = store_.counts();
    answerJSON(response, {{"uploads", counts.uploads},
                          {"problems", counts.problems},
                          {"events", counts.events},
                          {"confirmed", counts.confirmed},
                          {"duplicates", counts.duplicates},
                          {"faults", faults_.size()}});
}

} // namespace tallyfoot::collector
