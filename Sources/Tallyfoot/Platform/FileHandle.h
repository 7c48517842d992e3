#pragma once

#include "Tallyfoot/Platform/Result.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace tallyfoot {

struct FileStatus {
    std::uint64_t size;
    bool isLinked; // false once the file was removed under us
};

// An open file that grows at its end. Calls of one handle must not overlap. Apple: NSFileHandle.
class FileHandle {
public:
    virtual ~FileHandle() = default;

    // One append of all bytes. Whole or not at all: after a failure the file ends where it did.
    virtual Result<void> append(std::string_view bytes) = 0;

    // Size and links in one question to the system; asks for no times, which would make the next
    // write dearer.
    virtual Result<FileStatus> status() const = 0;

    // Reads up to buffer.size() bytes at the offset; fewer only at the end of the file.
    virtual Result<std::size_t> read(std::uint64_t offset, std::span<char> buffer) const = 0;

    virtual Result<void> truncate(std::uint64_t size) = 0;
};

} // namespace tallyfoot
