#pragma once

#include "Tallyfoot/Platform/Posix/FileDescriptor.h"

#include <string>

namespace tallyfoot {

// Keeps other processes, and other locks of this one, out for as long as it lives. The file is made
// if need be and stays. A process that dies lets go of it; one that is stopped in the middle is
// waited for a second at most.
class FileLock {
public:
    explicit FileLock(const std::string& path);

    explicit operator bool() const noexcept { return isHeld_; }
    bool isBusy() const noexcept { return !isHeld_ && static_cast<bool>(file_); } // somebody else has it

private:
    FileDescriptor file_;
    bool isHeld_ = false;
};

} // namespace tallyfoot
