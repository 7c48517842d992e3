#pragma once

#include "Tallyfoot/Platform/Mutex.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>

namespace tallyfoot::collector {

// Counts what has been stored, and lets threads wait for more of it or for the end. Any thread.
class Changes {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    std::uint64_t count();
    void signal();
    void stop(); // ends every wait, those to come too

    // Whether there has been a change after the one numbered `count`; false at the deadline or the end.
    bool waitPast(std::uint64_t count, Deadline deadline);
    // Only lets time pass.
    void waitUntil(Deadline deadline);

private:
    Mutex mutex_;
    std::condition_variable_any changed_;
    std::uint64_t count_ TALLYFOOT_GUARDED_BY(mutex_) = 0;
    bool stopped_ TALLYFOOT_GUARDED_BY(mutex_) = false;
};

} // namespace tallyfoot::collector
