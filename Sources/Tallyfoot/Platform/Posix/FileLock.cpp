#include "Tallyfoot/Platform/Posix/FileLock.h"

#include "Tallyfoot/Platform/Posix/SystemError.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>

namespace tallyfoot {

FileLock::FileLock(const std::string& path)
    : file_(retrying([&] { return ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600); })) {
    if (!file_) return;
    // There is no lock call with an end to its patience; holders need well below a millisecond.
    for (int attempt = 0; attempt < 1000; ++attempt) {
        isHeld_ = retrying([&] { return ::flock(file_.number(), LOCK_EX | LOCK_NB); }) == 0;
        if (isHeld_ || errno != EWOULDBLOCK) return;
        ::poll(nullptr, 0, 1);
    }
}

} // namespace tallyfoot
