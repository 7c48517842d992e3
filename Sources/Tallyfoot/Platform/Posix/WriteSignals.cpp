#include "Tallyfoot/Platform/Posix/WriteSignals.h"

#include "Tallyfoot/Platform/Posix/SystemError.h"

#include <pthread.h>
#include <time.h>

namespace tallyfoot {

WriteSignals::WriteSignals() {
    sigset_t held;
    ::sigemptyset(&held);
    ::sigaddset(&held, SIGPIPE);
    ::sigaddset(&held, SIGXFSZ);
    ::pthread_sigmask(SIG_BLOCK, &held, &former_);
    // Only a thread that had blocked a signal before can have one waiting that is not ours.
    ::sigemptyset(&foreign_);
    if (::sigismember(&former_, SIGPIPE) == 1 || ::sigismember(&former_, SIGXFSZ) == 1) ::sigpending(&foreign_);
}

WriteSignals::~WriteSignals() { ::pthread_sigmask(SIG_SETMASK, &former_, nullptr); }

void WriteSignals::takeAway(int number) noexcept {
    if (::sigismember(&foreign_, number) == 1) return;
    const int kept = errno;
    const timespec none{};
    sigset_t raised;
    ::sigemptyset(&raised);
    ::sigaddset(&raised, number);
    (void)retrying([&] { return ::sigtimedwait(&raised, nullptr, &none); });
    errno = kept;
}

} // namespace tallyfoot
