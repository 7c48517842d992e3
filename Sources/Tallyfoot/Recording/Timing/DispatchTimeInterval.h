#pragma once

#include <chrono>
#include <cstdint>

namespace tallyfoot {

// A span of time as the platform's dispatcher counts it.
class DispatchTimeInterval {
public:
    enum class Unit { seconds, milliseconds, microseconds, nanoseconds, never };

    static constexpr DispatchTimeInterval seconds(std::int64_t n) noexcept { return {Unit::seconds, n}; }
    static constexpr DispatchTimeInterval milliseconds(std::int64_t n) noexcept { return {Unit::milliseconds, n}; }
    static constexpr DispatchTimeInterval microseconds(std::int64_t n) noexcept { return {Unit::microseconds, n}; }
    static constexpr DispatchTimeInterval nanoseconds(std::int64_t n) noexcept { return {Unit::nanoseconds, n}; }
    static constexpr DispatchTimeInterval never() noexcept { return {Unit::never, 0}; }

    constexpr Unit unit() const noexcept { return unit_; }
    constexpr std::int64_t count() const noexcept { return count_; }

    double timeInterval() const noexcept;               // seconds; never is the largest finite double
    std::chrono::nanoseconds duration() const noexcept; // clamped to what nanoseconds hold; never is max()

    bool operator==(const DispatchTimeInterval&) const = default;

private:
    constexpr DispatchTimeInterval(Unit unit, std::int64_t count) noexcept : unit_(unit), count_(count) {}

    Unit unit_;
    std::int64_t count_;
};

} // namespace tallyfoot
