#pragma once

#include "Tallyfoot/Platform/Posix/FileDescriptor.h"

#include <string>

namespace tallyfoot {

// Tells cheaply that an open file was neither removed nor renamed, nor a folder or a link on its path,
// since the watch began, so that its owner need not look it up by its path each time. The system notes
// such a change before the call that makes it returns. A folder that we may not read is taken to stay,
// and so is a link that another one leads to.
class FileWatch {
public:
    // Without a watch, where the system has none to give or several of this process are still ending, nothing is
    // ever quiet.
    FileWatch(int file, const std::string& path);
    ~FileWatch(); // at once, though the system takes its time to end a watch
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    // True: nothing has happened to the file's name. False: something may have; a new watch is due.
    bool isQuiet() const noexcept;

private:
    FileDescriptor events_;
};

} // namespace tallyfoot
