#include "Tallyfoot/Recording/Timing/DispatchTimeInterval.h"

#include <limits>

namespace tallyfoot {

namespace {

std::chrono::nanoseconds clamped(std::int64_t count, std::int64_t nanosecondsEach) noexcept {
    std::int64_t product = 0;
    if (!__builtin_mul_overflow(count, nanosecondsEach, &product)) return std::chrono::nanoseconds(product);
    return count > 0 ? std::chrono::nanoseconds::max() : std::chrono::nanoseconds::min();
}

} // namespace

double DispatchTimeInterval::timeInterval() const noexcept {
    const auto count = static_cast<double>(count_);
    switch (unit_) {
    case Unit::seconds: return count;
    case Unit::milliseconds: return count * 0.001;
    case Unit::microseconds: return count * 0.000001;
    case Unit::nanoseconds: return count * 0.000000001;
    case Unit::never: break;
    }
    return std::numeric_limits<double>::max();
}

std::chrono::nanoseconds DispatchTimeInterval::duration() const noexcept {
    switch (unit_) {
    case Unit::seconds: return clamped(count_, 1'000'000'000);
    case Unit::milliseconds: return clamped(count_, 1'000'000);
    case Unit::microseconds: return clamped(count_, 1'000);
    case Unit::nanoseconds: return std::chrono::nanoseconds(count_);
    case Unit::never: break;
    }
    return std::chrono::nanoseconds::max();
}

} // namespace tallyfoot
