#pragma once

#include <cstdlib>

namespace tallyfoot::testing {

// A number from the environment, to lengthen or to repeat a run: TALLYFOOT_KILL_ROUNDS, TALLYFOOT_KILL_SEED,
// TALLYFOOT_CRASH_ROUNDS, TALLYFOOT_CRASH_SEED.
inline unsigned setting(const char* name, unsigned standard) {
    const char* value = std::getenv(name);
    return value == nullptr ? standard : static_cast<unsigned>(std::strtoul(value, nullptr, 10));
}

} // namespace tallyfoot::testing
