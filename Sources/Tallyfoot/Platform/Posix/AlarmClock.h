#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <utility>

namespace tallyfoot {

using Instant = std::chrono::steady_clock::time_point;

// An alarm that is set; no two ever get the same key, and keys are in the order of their ringing.
using AlarmKey = std::pair<Instant, std::uint64_t>;

class Alarm {
public:
    virtual ~Alarm() = default;
    virtual void ring(const AlarmKey& key) = 0;
};

// What the timers of a process wait on: monotonic time and a call when it has come. Any thread.
class AlarmClock {
public:
    virtual ~AlarmClock() = default;
    virtual Instant now() const = 0;

    // Rings once, on a thread of the clock's own and without a lock held.
    virtual AlarmKey set(Instant time, std::shared_ptr<Alarm> alarm) = 0;
    // It may be ringing at this moment all the same. One that has rung is passed over.
    virtual void remove(const AlarmKey& key) = 0;
};

} // namespace tallyfoot
