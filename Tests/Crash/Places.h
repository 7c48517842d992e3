#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace tallyfoot::testing {

// Where a crash happens.
struct Place {
    std::string name;
    std::function<void(const std::function<void()>&)> run; // returns only if the process goes on
};
inline void PrintTo(const Place& place, std::ostream* stream) { *stream << place.name; } // in the names of tests

// The main thread, the host's other one, and each kind that the library has: its recorder's, its timers'
// and its uploads'.
std::vector<Place> places();

void onWorker(const std::function<void()>& block);
void onRecorderQueue(const std::function<void()>& block);

[[noreturn]] void waitForTheEnd(); // of the process

} // namespace tallyfoot::testing
