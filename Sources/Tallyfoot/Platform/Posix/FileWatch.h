#pragma once

#include "Tallyfoot/Platform/Posix/FileDescriptor.h"

namespace tallyfoot {

// Tells cheaply that an open file was neither removed nor renamed since the watch began, so that its
// owner need not look it up by its path each time. The system notes such a change before the call
// that makes it returns.
class FileWatch {
public:
    // Without a watch, where the system has none to give, nothing is ever quiet.
    explicit FileWatch(int file);

    // True: nothing has happened to the file's name. False: something may have; a new watch is due.
    bool isQuiet() const noexcept;

private:
    FileDescriptor events_;
};

} // namespace tallyfoot
