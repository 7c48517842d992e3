#include "Tallyfoot/Platform/Posix/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace tallyfoot {

namespace {

int beyondStandardStreams(int number) {
    if (number < 0 || number > STDERR_FILENO) return number;
    const int moved = ::fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int kept = errno;
    ::close(number);
    errno = kept;
    return moved;
}

} // namespace

FileDescriptor::FileDescriptor(int number) : number_(beyondStandardStreams(number)) {}

FileDescriptor::~FileDescriptor() {
    if (number_ < 0) return;
    const int kept = errno; // so that a failure may be reported after the file was closed
    ::close(number_);
    errno = kept;
}

} // namespace tallyfoot
