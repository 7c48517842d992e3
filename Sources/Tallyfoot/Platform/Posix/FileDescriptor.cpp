#include "Tallyfoot/Platform/Posix/FileDescriptor.h"

#include <unistd.h>

#include <cerrno>

namespace tallyfoot {

FileDescriptor::~FileDescriptor() {
    if (number_ < 0) return;
    const int kept = errno; // so that a failure may be reported after the file was closed
    ::close(number_);
    errno = kept;
}

} // namespace tallyfoot
