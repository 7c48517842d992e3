#pragma once

#include "Collector/CollectorStore.h"

#include "Tallyfoot/Platform/Result.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot::collector {

// "Wait until `count` events match": of a type, and with the members given. Counts events that were
// accepted, each once, unless `all` asks for every stored record.
struct ExpectRequest {
    std::size_t count = 1;
    std::optional<std::string> type;
    nlohmann::json match = nlohmann::json::object();
    std::chrono::milliseconds timeout{5000};
    std::int64_t after = 0;
    bool all = false;

    static Result<ExpectRequest> parse(std::string_view json);
    EventFilter filter() const;
};

// Sorts events into those that match a request and the nearest misses.
class ExpectMatcher {
public:
    explicit ExpectMatcher(const ExpectRequest& request) : request_(request) {} // which must outlive it

    void add(std::vector<StoredEvent> events);
    bool isSatisfied() const { return matches_.size() >= request_.count; }
    std::int64_t last() const { return last_; } // the last event's id

    const std::vector<StoredEvent>& matches() const { return matches_; }

    // A few of those that differ in the fewest members, the closest first.
    struct Miss {
        StoredEvent event;
        std::size_t matched;
        nlohmann::ordered_json differences; // member -> {"expected", "actual"}
    };
    const std::vector<Miss>& nearestMisses() const { return misses_; }

private:
    void addMiss(Miss miss);

    const ExpectRequest& request_;
    std::vector<StoredEvent> matches_;
    std::vector<Miss> misses_;
    std::int64_t last_ = 0;
};

} // namespace tallyfoot::collector
