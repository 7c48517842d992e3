#include "Support/ManualClock.h"

namespace tallyfoot::testing {

void ManualClock::advance(std::chrono::nanoseconds step) {
    for (auto now = now_.load(); !now_.compare_exchange_weak(now, now + step);) {
    }
}

} // namespace tallyfoot::testing
