#pragma once

#include "Tallyfoot/Platform/Clock.h"

#include <atomic>

namespace tallyfoot::testing {

// A wall clock that stands still until the test moves it. Any thread.
class ManualClock final : public Clock {
public:
    ManualClock() = default; // 2024-03-07 14:05:09.123 UTC

    explicit ManualClock(Date start) : now_(start) {}

    Date now() const noexcept override { return now_.load(); }

    void set(Date date) { now_.store(date); } // as a user who corrects the clock, backwards too

    void advance(std::chrono::nanoseconds step);

private:
    std::atomic<Date> now_{Date(std::chrono::milliseconds(1709820309123))};
};

} // namespace tallyfoot::testing
