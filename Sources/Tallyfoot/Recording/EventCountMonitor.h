#pragma once

#include <cstdint>
#include <functional>

namespace tallyfoot {

// The trigger by volume. The recorder keeps the count and compares; more than the threshold
// triggers, the threshold itself does not.
struct EventCountMonitor {
    std::int64_t thresholdCount;
    std::function<void()> triggerUpload;
};

} // namespace tallyfoot
