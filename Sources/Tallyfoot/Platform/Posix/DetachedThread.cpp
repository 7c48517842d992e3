#include "Tallyfoot/Platform/Posix/DetachedThread.h"

#include "Tallyfoot/Platform/Posix/AlternateStack.h"

#include <pthread.h>
#include <signal.h>

#include <memory>
#include <utility>

namespace tallyfoot {

namespace {

constexpr std::size_t threadStackSize = std::size_t{1} << 20U; // address space only, until it is used
constexpr std::size_t nameLength = 15;

struct Start {
    std::string name;
    std::function<void()> body;
};

void* run(void* argument) {
    const std::unique_ptr<Start> start(static_cast<Start*>(argument));
    ::pthread_setname_np(::pthread_self(), start->name.c_str());
    ensureAlternateStack();
    start->body();
    return nullptr;
}

// All but those that a thread brings upon itself: crash hooks are to hear of them.
sigset_t blockedSignals() {
    sigset_t signals;
    ::sigfillset(&signals);
    for (const int own : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP}) ::sigdelset(&signals, own);
    return signals;
}

} // namespace

bool startDetachedThread(const std::string& label, std::function<void()> body) {
    auto start = std::make_unique<Start>(Start{label.substr(0, nameLength), std::move(body)});
    pthread_attr_t attributes;
    if (::pthread_attr_init(&attributes) != 0) return false;
    ::pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    ::pthread_attr_setstacksize(&attributes, threadStackSize);

    // Blocked already here, because a new thread inherits the mask: no moment is left for a handler.
    const auto blocked = blockedSignals();
    sigset_t former;
    ::pthread_sigmask(SIG_SETMASK, &blocked, &former);
    pthread_t thread{};
    const bool started = ::pthread_create(&thread, &attributes, run, start.get()) == 0;
    ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
    ::pthread_attr_destroy(&attributes);
    if (started) (void)start.release();
    return started;
}

} // namespace tallyfoot
