#include "Tallyfoot/Platform/Posix/PosixConsole.h"

#include "Tallyfoot/Platform/Mutex.h"
#include "Tallyfoot/Platform/Posix/SystemError.h"

#include <limits.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>

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

// For the length of a write, SIGPIPE is held back; the one that the write caused is taken away.
class PipeSignalGuard {
public:
    PipeSignalGuard() {
        ::sigemptyset(&pipe_);
        ::sigaddset(&pipe_, SIGPIPE);
        ::pthread_sigmask(SIG_BLOCK, &pipe_, &former_);
        // Only a thread that had blocked the signal before can have one waiting that is not ours.
        sigset_t pending;
        isForeign_ = ::sigismember(&former_, SIGPIPE) == 1 && ::sigpending(&pending) == 0
                     && ::sigismember(&pending, SIGPIPE) == 1;
    }

    ~PipeSignalGuard() {
        const timespec none{};
        if (wasRaised_ && !isForeign_)
            while (::sigtimedwait(&pipe_, nullptr, &none) == -1 && errno == EINTR) {
            }
        ::pthread_sigmask(SIG_SETMASK, &former_, nullptr);
    }

    PipeSignalGuard(const PipeSignalGuard&) = delete;
    PipeSignalGuard& operator=(const PipeSignalGuard&) = delete;

    void raised() { wasRaised_ = true; }

private:
    sigset_t pipe_;
    sigset_t former_;
    bool isForeign_;
    bool wasRaised_ = false;
};

using Instant = std::chrono::steady_clock::time_point;

bool becomesWritable(int descriptor, Instant until) {
    pollfd request{descriptor, POLLOUT, 0};
    return retrying([&] {
               const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
               return ::poll(&request, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
           })
           != 0;
}

bool isRegularFile(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

// The part that the descriptor did not take.
std::string_view writtenOut(int descriptor, std::string_view text, Instant until) {
    PipeSignalGuard guard;
    // A pipe that is ready takes so much at once; more than that would be waited for, as long as it takes.
    const std::size_t most = text.size() <= PIPE_BUF || isRegularFile(descriptor) ? text.size() : PIPE_BUF;
    while (!text.empty() && becomesWritable(descriptor, until)) {
        const auto count = ::write(descriptor, text.data(), std::min(text.size(), most));
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) {
            if (std::chrono::steady_clock::now() >= until) break;
        } else if (errno != EINTR) {
            if (errno == EPIPE) guard.raised();
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
