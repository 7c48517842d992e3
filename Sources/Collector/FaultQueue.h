#pragma once

#include "Collector/Fault.h"

#include "Tallyfoot/Platform/Exclusive.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <random>
#include <vector>

namespace tallyfoot::collector {

// The faults to come. Every upload takes the next one; with none left it is accepted, or, once a
// seed was given, gets what chance decides. Any thread.
class FaultQueue {
public:
    void append(const std::vector<Fault>& faults);
    void chooseAtRandom(std::uint64_t seed); // the same seed, the same faults in the same order
    void clear();                            // the chance too

    Fault next();
    std::size_t size() const;

private:
    struct State {
        std::deque<Fault> faults;
        std::optional<std::mt19937_64> random;
    };
    Exclusive<State> state_;
};

} // namespace tallyfoot::collector
