#include "Tallyfoot/Recording/Timing/RepeaterInterval.h"

#include "Tallyfoot/Platform/FatalError.h"

namespace tallyfoot {

namespace {

DispatchTimeInterval wholeSeconds(std::int64_t count, std::int64_t secondsEach) {
    std::int64_t product = 0;
    if (__builtin_mul_overflow(count, secondsEach, &product))
        fatalError("an interval overflows when counted in seconds");
    return DispatchTimeInterval::seconds(product);
}

DispatchTimeInterval wholeMilliseconds(double seconds) {
    constexpr double bound =
        9'223'372'036'854'775'808.0; // 2^63: the first value too large, its negative the last in range
    const double milliseconds = seconds * 1000;
    if (!(milliseconds >= -bound && milliseconds < bound)) { // written so that NaN fails, too
        fatalError("an interval in seconds is not finite or out of range");
    }
    return DispatchTimeInterval::milliseconds(static_cast<std::int64_t>(milliseconds));
}

} // namespace

DispatchTimeInterval RepeaterInterval::value() const {
    switch (unit_) {
    case Unit::nanoseconds: return DispatchTimeInterval::nanoseconds(count_);
    case Unit::microseconds: return DispatchTimeInterval::microseconds(count_);
    case Unit::milliseconds: return DispatchTimeInterval::milliseconds(count_);
    case Unit::minutes: return wholeSeconds(count_, 60);
    case Unit::seconds: return wholeMilliseconds(seconds_);
    case Unit::hours: return wholeSeconds(count_, 3600);
    case Unit::days: return wholeSeconds(count_, 86400);
    }
    fatalError("an interval of no unit");
}

} // namespace tallyfoot
