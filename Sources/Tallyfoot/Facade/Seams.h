#pragma once

#include <functional>
#include <string>

namespace tallyfoot {

// Where automatic capture and crash capture plug in. What is not plugged in does nothing.
struct Seams {
    std::function<void()> installInterceptions = [] {};                             // once a process
    std::function<void()> installCrashHooks = [] {};                                // at every configure
    std::function<std::string()> currentScreenTitle = [] { return std::string(); }; // any thread
};

} // namespace tallyfoot
