#pragma once

#include "Tallyfoot/Platform/FileHandle.h"
#include "Tallyfoot/Platform/FileManager.h"

#include <memory>
#include <string>
#include <string_view>

namespace tallyfoot {

// The one growing file of records. Every call holds the recorder's turn.
class RecordFile {
public:
    explicit RecordFile(FileManager& fileManager) : fileManager_(fileManager) {}

    bool isOpen() const noexcept { return handle_ != nullptr; }

    // Opens a file that exists. The fragment that a killed run left at its end is cut off at the
    // last separator, so that it never fuses with the next record.
    Result<void> open(const std::string& path);

    // Whole or not at all. Tells how the file stands afterwards: two calls of the system, no
    // allocation. The file must be open.
    Result<FileStatus> append(std::string_view record);

    void close() noexcept { handle_.reset(); }

private:
    FileManager& fileManager_;
    std::unique_ptr<FileHandle> handle_;
};

} // namespace tallyfoot
