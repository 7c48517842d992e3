#pragma once

namespace tallyfoot {

// Keeps other processes out until the last one here that has it lets go, or the process ends. A child
// that is forked does not have it. Any thread.
class ProcessLock {
public:
    virtual ~ProcessLock() = default;
};

} // namespace tallyfoot
