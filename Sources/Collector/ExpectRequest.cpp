#include "Collector/ExpectRequest.h"

#include "Collector/JSONInput.h"

#include <algorithm>

namespace tallyfoot::collector {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr std::size_t keptMisses = 5;

void parseMember(const std::string& name, const json& value, ExpectRequest& request) {
    if (name == "count") {
        request.count = wholeNumber<std::size_t>(value);
    } else if (name == "type") {
        request.type = value.get<std::string>();
    } else if (name == "match") {
        if (!value.is_object()) throw std::invalid_argument("\"match\" is an object");
        request.match = value;
    } else if (name == "timeoutMilliseconds") {
        request.timeout = std::chrono::milliseconds(wholeNumber<std::uint32_t>(value));
    } else if (name == "after") {
        request.after = wholeNumber<std::int64_t>(value);
    } else if (name == "all") {
        request.all = value.get<bool>();
    } else {
        throw std::invalid_argument("unknown member \"" + name + "\"");
    }
}

ordered_json difference(const json& expected, const json& record, const std::string& name) {
    const auto member = record.find(name);
    ordered_json both{{"expected", expected}};
    both["actual"] = member == record.end() ? ordered_json() : ordered_json(*member);
    return both;
}

} // namespace

Result<ExpectRequest> ExpectRequest::parse(std::string_view text) {
    try {
        const auto description = parsedInput(text);
        if (!description.is_object()) return Error{"an object is expected"};
        ExpectRequest request;
        for (const auto& [name, value] : description.items()) parseMember(name, value, request);
        return request;
    } catch (const std::exception& failure) {
        return Error{failure.what()};
    }
}

// The type is not part of it: an event of another type may be a near miss.
EventFilter ExpectRequest::filter() const {
    EventFilter filter;
    filter.after = after;
    if (!all) {
        filter.accepted = true;
        filter.duplicate = false;
    }
    return filter;
}

void ExpectMatcher::add(std::vector<StoredEvent> events) {
    for (auto& event : events) {
        last_ = event.id;
        const auto record = json::parse(event.record);
        Miss miss{{}, 0, ordered_json::object()};
        for (const auto& [name, value] : request_.match.items()) {
            const auto member = record.find(name);
            if (member != record.end() && *member == value) {
                ++miss.matched;
            } else {
                miss.differences[name] = difference(value, record, name);
            }
        }
        if (!request_.type || *request_.type == event.evtType) {
            miss.matched += request_.type ? 1 : 0;
        } else {
            miss.differences["evtType"] = {{"expected", *request_.type}, {"actual", event.evtType}};
        }
        if (miss.differences.empty()) {
            matches_.push_back(std::move(event));
        } else {
            miss.event = std::move(event);
            addMiss(std::move(miss));
        }
    }
}

void ExpectMatcher::addMiss(Miss miss) {
    const auto place = std::upper_bound(misses_.begin(), misses_.end(), miss,
                                        [](const Miss& a, const Miss& b) { return a.matched > b.matched; });
    if (place == misses_.end() && misses_.size() == keptMisses) return;
    misses_.insert(place, std::move(miss));
    if (misses_.size() > keptMisses) misses_.pop_back();
}

} // namespace tallyfoot::collector
