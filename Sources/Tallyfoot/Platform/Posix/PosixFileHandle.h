#pragma once

#include "Tallyfoot/Platform/FileHandle.h"
#include "Tallyfoot/Platform/Posix/FileDescriptor.h"
#include "Tallyfoot/Platform/Posix/FileWatch.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tallyfoot {

// A regular file opened for reading and appending. An append is one system call, isInPlace another.
class PosixFileHandle final : public FileHandle {
public:
    PosixFileHandle(FileDescriptor descriptor, std::string path);

    Result<void> append(std::string_view bytes) override;
    Result<std::uint64_t> size() const override;
    bool isInPlace() override;
    Result<std::size_t> read(std::uint64_t offset, std::span<char> buffer) const override;
    Result<void> truncate(std::uint64_t size) override;
    bool lock() override;

private:
    enum class Place { here, elsewhere, unknown };

    Place look() const; // where the path leads to
    Result<void> appendAll(std::string_view bytes);
    Result<void> appendRest(std::string_view bytes, std::size_t written);

    FileDescriptor descriptor_;
    std::string path_;
    std::uint64_t room_;             // up to the limit that the process had for its files when this one was opened
    std::optional<FileWatch> watch_; // while it is in place, from the first question on
};

} // namespace tallyfoot
