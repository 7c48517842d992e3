#pragma once

#include "Tallyfoot/Platform/FileHandle.h"
#include "Tallyfoot/Platform/Posix/FileDescriptor.h"

#include <string>

namespace tallyfoot {

// A regular file opened for reading and appending. An append is one system call, a status another.
class PosixFileHandle final : public FileHandle {
public:
    PosixFileHandle(FileDescriptor descriptor, std::string path);

    Result<void> append(std::string_view bytes) override;
    Result<FileStatus> status() const override;
    Result<std::size_t> read(std::uint64_t offset, std::span<char> buffer) const override;
    Result<void> truncate(std::uint64_t size) override;

private:
    Result<void> appendRest(std::string_view bytes, std::size_t written);

    FileDescriptor descriptor_;
    std::string path_; // for the texts of errors only
};

} // namespace tallyfoot
