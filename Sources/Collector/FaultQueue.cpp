#include "Collector/FaultQueue.h"

namespace tallyfoot::collector {

namespace {

// Of 100 uploads about half are accepted at once, so that a client gets forward in spite of the rest.
// No library distribution: they differ between implementations, and a seed must mean the same anywhere.
Fault randomFault(std::mt19937_64& random) {
    Fault fault;
    const auto choice = random() % 100;
    const auto detail = random();
    if (choice < 50) {
        fault.kind = Fault::Kind::accept;
    } else if (choice < 62) {
        fault.kind = Fault::Kind::refuse;
        fault.refusesEvery = 2 + detail % 3;
    } else if (choice < 70) {
        fault.kind = Fault::Kind::refuse;
        fault.refusesAll = true;
    } else if (choice < 74) {
        fault.kind = Fault::Kind::status;
        constexpr const char* codes[]{"10000002", "10000003", "10000008"};
        fault.statusCode = codes[detail % 3];
    } else if (choice < 82) {
        fault.kind = Fault::Kind::reset;
        fault.afterBytes = detail % 20000;
    } else if (choice < 90) {
        fault.kind = Fault::Kind::dropReply;
    } else if (choice < 95) {
        fault.kind = Fault::Kind::http;
        fault.httpStatus = detail % 2 == 0 ? 500 : 503;
        fault.body = "text";
    } else {
        fault.kind = Fault::Kind::garbage;
    }
    return fault;
}

} // namespace

void FaultQueue::append(const std::vector<Fault>& faults) {
    state_.modify([&](State& state) { state.faults.insert(state.faults.end(), faults.begin(), faults.end()); });
}

void FaultQueue::chooseAtRandom(std::uint64_t seed) {
    state_.modify([&](State& state) { state.random.emplace(seed); });
}

void FaultQueue::clear() { state_.exchange({}); }

Fault FaultQueue::next() {
    return state_.modify([](State& state) {
        if (state.faults.empty()) return state.random ? randomFault(*state.random) : Fault();
        Fault fault = std::move(state.faults.front());
        state.faults.pop_front();
        return fault;
    });
}

std::size_t FaultQueue::size() const {
    return state_.read([](const State& state) { return state.faults.size(); });
}

} // namespace tallyfoot::collector
