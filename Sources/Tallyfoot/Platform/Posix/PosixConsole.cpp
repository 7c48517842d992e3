#include "Tallyfoot/Platform/Posix/PosixConsole.h"

#include "Tallyfoot/Platform/Mutex.h"
#include "Tallyfoot/Platform/Posix/FileDescriptor.h"
#include "Tallyfoot/Platform/Posix/SystemError.h"
#include "Tallyfoot/Platform/Posix/WriteSignals.h"

#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace tallyfoot {

namespace {

constexpr auto patience = std::chrono::milliseconds(250); // what a text may cost its caller at most

struct Output {
    Mutex mutex;
    bool isTorn TALLYFOOT_GUARDED_BY(mutex) = false;    // a line was given up in its middle
    bool isStalled TALLYFOOT_GUARDED_BY(mutex) = false; // the last text was not taken in time
};

// Never released: the library may trace while the process ends.
Output& output() {
    static auto& shared = *new Output;
    return shared;
}

using Moment = std::chrono::steady_clock::time_point;

bool becomesWritable(int descriptor, Moment until) {
    pollfd request{descriptor, POLLOUT, 0};
    return retrying([&] {
               const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
               return ::poll(&request, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
           })
           != 0;
}

mode_t kindOf(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 ? status.st_mode & S_IFMT : 0;
}

// A terminal that is ready may have room for a single character, and would be waited for until the rest
// fits. Opened anew it is not, and the host's own descriptor, others' too perhaps, stays as it is.
FileDescriptor openedAnew(int terminal) {
    const auto path = "/proc/self/fd/" + std::to_string(terminal);
    return FileDescriptor(::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

// The part that the descriptor did not take.
std::string_view writtenOut(int descriptor, std::string_view text, Moment until) {
    WriteSignals signals;
    const auto kind = kindOf(descriptor);
    const auto terminal = kind == S_IFCHR && ::isatty(descriptor) == 1 ? openedAnew(descriptor) : FileDescriptor();
    if (terminal) descriptor = terminal.number();
    // A pipe that is ready takes so much at once; more than that would be waited for, as long as it takes.
    const std::size_t most = kind == S_IFREG ? text.size() : PIPE_BUF;
    while (!text.empty() && becomesWritable(descriptor, until)) {
        const auto count = ::write(descriptor, text.data(), std::min(text.size(), most));
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) {
            if (std::chrono::steady_clock::now() >= until) break;
        } else if (errno != EINTR) {
            signals.takeAway(errno == EPIPE ? SIGPIPE : SIGXFSZ);
            break;
        }
    }
    return text;
}

} // namespace

void PosixConsole::write(std::string_view text) noexcept {
    const int kept = errno;
    auto& shared = output();
    {
        MutexLock lock(shared.mutex);
        // Once is enough: while nothing is taken, nothing more is waited for.
        auto until = std::chrono::steady_clock::now();
        if (!shared.isStalled) until += patience;
        if (shared.isTorn) shared.isTorn = !writtenOut(descriptor_, "\n", until).empty();
        if (!shared.isTorn) {
            const auto lost = writtenOut(descriptor_, text, until);
            shared.isTorn = !lost.empty() && lost.size() < text.size();
            shared.isStalled = !lost.empty();
        }
    }
    errno = kept;
}

} // namespace tallyfoot
