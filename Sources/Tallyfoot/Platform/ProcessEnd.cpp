#include "Tallyfoot/Platform/ProcessEnd.h"

#include <atomic>
#include <cstdlib>

namespace tallyfoot {

namespace {

constinit std::atomic<bool> processHasBegunToEnd = false;

} // namespace

void ProcessEnd::watch() noexcept {
    [[maybe_unused]] static const int isWatched = std::atexit([] { processHasBegunToEnd = true; });
}

bool ProcessEnd::hasBegun() noexcept { return processHasBegunToEnd; }

} // namespace tallyfoot
