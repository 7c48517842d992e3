#pragma once

#include "Tallyfoot/Platform/Mutex.h"

#include <atomic>
#include <chrono>
#include <cstdint>

namespace tallyfoot {

// The lock of a queue. Free, it is taken and given back with one atomic step each. Contended, whoever
// runs gets it first, so that threads which come often do not wait for a switch each time; but one
// who has waited for about a millisecond is handed it directly, so that nobody starves.
class TALLYFOOT_CAPABILITY("turn") Turn {
public:
    void lock() TALLYFOOT_ACQUIRE() {
        std::uint32_t free = 0;
        if (!state_.compare_exchange_strong(free, held, std::memory_order_acquire, std::memory_order_relaxed))
            lockSlowly();
    }
    void unlock() TALLYFOOT_RELEASE() {
        auto mine = held;
        if (!state_.compare_exchange_strong(mine, 0, std::memory_order_release, std::memory_order_relaxed))
            unlockSlowly();
    }

private:
    using Instant = std::chrono::steady_clock::time_point;
    struct Waiter;

    static constexpr std::uint32_t held = 1;
    static constexpr std::uint32_t parked = 2; // the list of waiters is not empty
    static constexpr std::uint32_t woken = 4;  // one waiter was woken and competes: no need to wake more

    void lockSlowly();
    bool park(Waiter& waiter);
    void unlockSlowly();

    std::atomic<std::uint32_t> state_{0};
    Mutex parking_; // `parked` changes under it only
    Waiter* first_ TALLYFOOT_GUARDED_BY(parking_) = nullptr;
    Waiter* last_ TALLYFOOT_GUARDED_BY(parking_) = nullptr;
    Instant lastHandover_ TALLYFOOT_GUARDED_BY(parking_){};
};

} // namespace tallyfoot
