#include "Tallyfoot/Platform/Posix/PosixConsole.h"

#include "Tallyfoot/Platform/Mutex.h"

#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace tallyfoot {

namespace {

constexpr auto patience = std::chrono::milliseconds(5); // what a text may cost its caller at most

struct Output {
    Mutex mutex;
    bool isTorn TALLYFOOT_GUARDED_BY(mutex) = false; // a line was given up in its middle
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

bool becomesWritable(int descriptor, std::chrono::steady_clock::time_point until) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
    pollfd request{descriptor, POLLOUT, 0};
    return left.count() > 0 && ::poll(&request, 1, static_cast<int>(left.count())) != 0;
}

// The part that the descriptor did not take.
std::string_view writtenOut(int descriptor, std::string_view text) {
    PipeSignalGuard guard;
    std::chrono::steady_clock::time_point until{};
    while (!text.empty()) {
        const auto count = ::write(descriptor, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) {
            if (until.time_since_epoch().count() == 0) until = std::chrono::steady_clock::now() + patience;
            if (!becomesWritable(descriptor, until)) break;
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
        if (shared.isTorn) shared.isTorn = !writtenOut(descriptor_, "\n").empty();
        if (!shared.isTorn) {
            const auto lost = writtenOut(descriptor_, text);
            shared.isTorn = !lost.empty() && lost.size() < text.size();
        }
    }
    errno = kept;
}

} // namespace tallyfoot
