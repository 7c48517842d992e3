#pragma once

#include <signal.h>

namespace tallyfoot {

// Holds back, on this thread and for as long as it lives, the signals by which a write may end a process:
// its reader is gone, or the file would grow beyond the process's limit.
class WriteSignals {
public:
    WriteSignals();
    ~WriteSignals();
    WriteSignals(const WriteSignals&) = delete;
    WriteSignals& operator=(const WriteSignals&) = delete;

    // After a write that failed: takes away the one that it raised, and none that the host had waiting. Keeps errno.
    void takeAway(int number) noexcept;

private:
    sigset_t former_;
    sigset_t foreign_;
};

} // namespace tallyfoot
