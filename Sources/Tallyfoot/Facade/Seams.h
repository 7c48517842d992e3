#pragma once

#include <functional>

namespace tallyfoot {

// What configuration installs outside the facade; tests put observers in its place.
struct Seams {
    std::function<void()> installInterceptions = [] {}; // once a process
    std::function<void()> installCrashHooks = [] {};    // at every configure
};

} // namespace tallyfoot
