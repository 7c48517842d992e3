#pragma once

#include <utility>

namespace tallyfoot {

// An open file that is closed with its owner. Never under the number of a standard stream that the
// host has closed: what is meant for the stream, our own trace for one, would get into the file.
class FileDescriptor {
public:
    FileDescriptor() = default;

    explicit FileDescriptor(int number);

    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    ~FileDescriptor();

    explicit operator bool() const noexcept { return number_ >= 0; }

    int number() const noexcept { return number_; }

    int release() noexcept { return std::exchange(number_, -1); } // the caller closes it from now on

private:
    int number_ = -1;
};

} // namespace tallyfoot
