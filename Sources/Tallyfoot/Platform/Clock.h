#pragma once

#include <chrono>

namespace tallyfoot {

using Date = std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds>;

// The wall clock. Any thread. It may jump, as the user's clock does. Apple: NSDate.
class Clock {
public:
    virtual ~Clock() = default;
    virtual Date now() const noexcept = 0;
};

// Seconds since 1970, as the platform's timeIntervalSince1970 gives them.
constexpr double timeIntervalSince1970(Date date) noexcept {
    return std::chrono::duration<double>(date.time_since_epoch()).count();
}

} // namespace tallyfoot
