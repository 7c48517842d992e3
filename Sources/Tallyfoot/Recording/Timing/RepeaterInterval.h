#pragma once

#include "Tallyfoot/Export.h"
#include "Tallyfoot/Recording/Timing/DispatchTimeInterval.h"

#include <cstdint>

namespace tallyfoot {

// A duration in the unit in which it was given; `Repeater::Interval`.
class TALLYFOOT_EXPORT RepeaterInterval {
public:
    enum class Unit { nanoseconds, microseconds, milliseconds, minutes, seconds, hours, days };

    static RepeaterInterval nanoseconds(std::int64_t n) noexcept { return {Unit::nanoseconds, n, 0}; }
    static RepeaterInterval microseconds(std::int64_t n) noexcept { return {Unit::microseconds, n, 0}; }
    static RepeaterInterval milliseconds(std::int64_t n) noexcept { return {Unit::milliseconds, n, 0}; }
    static RepeaterInterval minutes(std::int64_t n) noexcept { return {Unit::minutes, n, 0}; }
    static RepeaterInterval seconds(double n) noexcept { return {Unit::seconds, 0, n}; } // the only fractional one
    static RepeaterInterval hours(std::int64_t n) noexcept { return {Unit::hours, n, 0}; }
    static RepeaterInterval days(std::int64_t n) noexcept { return {Unit::days, n, 0}; }

    Unit unit() const noexcept { return unit_; }

    // Seconds go through whole milliseconds, truncated. Fatal on overflow, and for seconds that are
    // not finite or out of range.
    DispatchTimeInterval value() const;

    bool operator==(const RepeaterInterval&) const = default;

private:
    RepeaterInterval(Unit unit, std::int64_t count, double seconds) noexcept
        : unit_(unit), count_(count), seconds_(seconds) {}

    Unit unit_;
    std::int64_t count_;
    double seconds_;
};

} // namespace tallyfoot
