#pragma once

#include "Tallyfoot/Platform/FileHandle.h"
#include "Tallyfoot/Platform/FileManager.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tallyfoot {

// The one growing file of records. Every call holds the recorder's turn; all but `open` and `close`
// want it open.
class RecordFile {
public:
    explicit RecordFile(FileManager& fileManager) : fileManager_(fileManager) {}

    bool isOpen() const noexcept { return handle_ != nullptr; }

    enum class Opened { ours, anothers };

    // Opens a file that exists, and keeps other processes from writing to it. One that another process writes
    // to stays closed. The fragment that a killed run left at its end is cut off at the last separator, so
    // that it never fuses with the next record.
    Result<Opened> open(const std::string& path);

    bool isInPlace() { return handle_->isInPlace(); } // false once it was moved or removed under us
    std::uint64_t size() const noexcept { return size_; }

    // Whole or not at all: one call of the system, no allocation.
    Result<void> append(std::string_view record);

    void close() noexcept { handle_.reset(); }

private:
    FileManager& fileManager_;
    std::unique_ptr<FileHandle> handle_;
    std::uint64_t size_ = 0; // counted, since nobody else writes to the file
};

} // namespace tallyfoot
