#pragma once

#include "Tallyfoot/Platform/Result.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace tallyfoot {

// An open file that grows at its end. Calls of one handle must not overlap. Apple: NSFileHandle.
class FileHandle {
public:
    virtual ~FileHandle() = default;

    // One append of all bytes. Whole or not at all: after a failure the file ends where it did.
    virtual Result<void> append(std::string_view bytes) = 0;

    virtual Result<std::uint64_t> size() const = 0;

    // Whether the path that it was opened at still leads to this file: not after it was removed,
    // renamed or replaced under us, or a folder or link above it was. Where that cannot be told, it does. After
    // the first question cheap enough to ask before each append.
    virtual bool isInPlace() = 0;

    // Reads up to buffer.size() bytes at the offset; fewer only at the end of the file.
    virtual Result<std::size_t> read(std::uint64_t offset, std::span<char> buffer) const = 0;

    virtual Result<void> truncate(std::uint64_t size) = 0;

    // Keeps other processes from a lock on the file until the handle goes. False while another one has it.
    virtual bool lock() = 0;
};

} // namespace tallyfoot
