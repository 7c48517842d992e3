#include "Tallyfoot/Platform/Posix/PosixCrashHooks.h"

#include "Tallyfoot/Platform/Posix/AlternateStack.h"

#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <ucontext.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>

namespace tallyfoot {

namespace {

constexpr unsigned patienceInSeconds = 5; // with hooks and exit handlers, the host's among them
constexpr int mostPauses = 2000;          // while another thread keeps what its hook keeps
constexpr int mostSignals = 65;
constexpr std::size_t sizeOfMask = 8; // as the system knows it

// What is read inside a handler: constant-initialised, lock-free, in nobody's thread-local storage, which
// may be allocated when it is first touched.
constinit std::atomic<CrashHooks::ExceptionHook> exceptionHook{nullptr};
constinit std::array<std::atomic<CrashHooks::SignalHook>, mostSignals> signalHooks{};
constinit std::atomic<const CrashHooks::ExceptionRuntime*> exceptionRuntime{nullptr};
constinit std::atomic<pid_t> owner{0}; // the process that installed
constinit std::atomic<pid_t> crashingThread{0};
constinit std::atomic<pid_t> reasoningThread{0}; // asks an exception for its reason
constinit std::atomic<int> crashingSignal{0};    // 0 for an exception
constinit std::atomic<bool> isKept{false};
constinit std::atomic<std::int64_t> watchdogDeadline{0}; // in nanoseconds
constinit const void* interruptedMask = nullptr;         // where the crashing thread's is; nobody else touches it

static_assert(std::atomic<CrashHooks::SignalHook>::is_always_lock_free && std::atomic<pid_t>::is_always_lock_free);

pid_t thisThread() noexcept { return static_cast<pid_t>(::syscall(SYS_gettid)); }

void setAction(int number, void (*handler)(int)) noexcept {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_ONSTACK | SA_RESTART;
    ::sigfillset(&action.sa_mask);
    ::sigaction(number, &action, nullptr);
}

void unblock(int number) noexcept {
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, number);
    ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

// Whoever calls what does not return stays out of AddressSanitizer: before such a call it looks for the stack's
// bounds, which takes memory, and the crash may have left the lock for that taken.
[[noreturn, gnu::no_sanitize_address]] void endAtOnce() noexcept {
    const int number = crashingSignal.load();
    if (number != 0) ::_exit(number);
    setAction(SIGABRT, SIG_DFL);
    unblock(SIGABRT);
    ::raise(SIGABRT);
    ::_exit(SIGABRT);
}

std::int64_t now() noexcept {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

void keep(std::string_view reason) noexcept;

// A timer of the host's may ring with the same signal, and earlier.
[[gnu::no_sanitize_address]] void onAlarm(int) {
    if (now() < watchdogDeadline.load()) return;
    // A reason that does not come is none. Of several threads that hear this at once, one keeps that, and the
    // others wait for it.
    if (reasoningThread.load() != 0 && !isKept.load()) keep({});
    endAtOnce();
}

enum class Hearer { anyThread, thisThread };

// By bare system calls: the C library's own functions may take memory.
bool ring(int number, unsigned seconds, Hearer hearer) noexcept {
    sigevent event{};
    event.sigev_notify = hearer == Hearer::thisThread ? SIGEV_THREAD_ID : SIGEV_SIGNAL;
    event.sigev_signo = number;
    event._sigev_un._tid = thisThread();
    int timer = 0;
    itimerspec time{};
    time.it_value.tv_sec = seconds;
    return ::syscall(SYS_timer_create, CLOCK_MONOTONIC, &event, &timer) == 0
           && ::syscall(SYS_timer_settime, timer, 0, &time, nullptr) == 0;
}

// Timers rather than a thread that watches: they need nothing made beforehand. The first goes to any thread,
// if this one cannot hear it; the second to this one, if a thread of the host's waits for the first and takes
// it. The process's one alarm only where there is no timer: it would outlive an exec.
void armWatchdog() noexcept {
    watchdogDeadline.store(now() + std::int64_t{patienceInSeconds} * 1'000'000'000);
    setAction(SIGALRM, onAlarm);
    unblock(SIGALRM);
    if (!ring(SIGALRM, patienceInSeconds, Hearer::anyThread)) ::alarm(patienceInSeconds);
    (void)ring(SIGALRM, patienceInSeconds, Hearer::thisThread);
}

// From here on nothing cuts the thread short: no signal that is sent to it (a fault does, and ends the process),
// no request for its cancellation, no file that grows beyond what the process may write.
sigset_t protectThread() noexcept {
    sigset_t all;
    sigset_t former;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &former);
    int state = 0;
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state);
    setAction(SIGXFSZ, SIG_IGN);
    return former;
}

void pauseBriefly() noexcept {
    const timespec millisecond{0, 1'000'000};
    ::nanosleep(&millisecond, nullptr);
}

// True for the one thread whose crash is told. The others end the process, once that crash is kept.
bool claim(int number) noexcept {
    const auto self = thisThread();
    pid_t nobody = 0;
    if (crashingThread.compare_exchange_strong(nobody, self)) {
        crashingSignal.store(number);
        return true;
    }
    if (crashingThread.load() != self)
        for (int pauses = 0; !isKept.load() && pauses < mostPauses; ++pauses) pauseBriefly();
    return false;
}

bool isOurProcess() noexcept { return owner.load() == ::getpid(); }

// A synchronous fault comes again when the handler returns; one that was sent is sent again.
void leaveToDefaultAction(int number) noexcept {
    setAction(number, SIG_DFL);
    ::raise(number);
}

[[gnu::no_sanitize_address]] void onSignal(int number, siginfo_t*, void* context) {
    if (!isOurProcess()) return leaveToDefaultAction(number);
    (void)protectThread(); // a handler of the host's that passes the signal on may have blocked nothing
    if (!claim(number)) endAtOnce();
    interruptedMask = static_cast<const char*>(context) + offsetof(ucontext_t, uc_sigmask);
    armWatchdog();
    signalHooks[static_cast<std::size_t>(number)].load()(number);
    endAtOnce();
}

[[gnu::no_sanitize_address]] void keep(std::string_view reason) noexcept {
    const auto former = protectThread();
    if (!claim(0)) endAtOnce();
    armWatchdog();
    exceptionHook.load()(reason);
    isKept.store(true);
    setAction(SIGABRT, SIG_DFL); // the abort to come is this same crash
    ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
    unblock(SIGALRM);
}

// To find a reason is to run code of the host's. False on a thread that has begun: the first one failed.
bool beginReasoning() noexcept {
    if (reasoningThread.exchange(thisThread()) == thisThread()) return false;
    armWatchdog();
    return true;
}

void onExceptionOfRuntime(FunctionRef<std::string()> reason) noexcept {
    if (!isOurProcess()) return;
    if (beginReasoning())
        keep(reason());
    else
        keep("");
}

// The runtime's own message. A handler of the host's is never called: ours replaces it.
[[noreturn]] void endAsUsual() {
#ifdef __GLIBCXX__
    __gnu_cxx::__verbose_terminate_handler();
#endif
    std::abort();
}

[[noreturn]] void onTerminate() {
    if (!isOurProcess()) endAsUsual();
    if (beginReasoning() && std::current_exception()) {
        try {
            throw;
        } catch (const std::exception& exception) {
            const char* const reason = exception.what();
            keep(reason == nullptr ? "" : reason);
        } catch (...) {
            keep("");
        }
    } else {
        keep("");
    }
    endAsUsual();
}

} // namespace

void PosixCrashHooks::setUncaughtExceptionHandler(ExceptionHook hook) {
    owner.store(::getpid());
    exceptionHook.store(hook);
    const auto* const runtime = exceptionRuntime.load();
    if (runtime == nullptr || !runtime->endsInTerminate) std::set_terminate(onTerminate);
    if (runtime != nullptr) runtime->setUncaughtExceptionHandler(onExceptionOfRuntime);
}

void PosixCrashHooks::connect(const ExceptionRuntime& runtime) { exceptionRuntime.store(&runtime); }

void PosixCrashHooks::signal(int number, SignalHook hook) {
    owner.store(::getpid());
    signalHooks.at(static_cast<std::size_t>(number)).store(hook);
    struct sigaction action {};
    action.sa_sigaction = onSignal;
    // Everything is blocked meanwhile: a second signal must not cut off what the hook keeps.
    action.sa_flags = SA_ONSTACK | SA_SIGINFO | SA_RESTART;
    ::sigfillset(&action.sa_mask);
    ::sigaction(number, &action, nullptr);
}

[[gnu::no_sanitize_address]] void PosixCrashHooks::exit(int status) noexcept {
    isKept.store(true);
    // The exit handlers run as the thread ran, but open to a crash of their own and to the alarm. By the bare
    // system call, which refuses an address that is none: a handler of the host's that passes a signal on may
    // do so by its number alone.
    ::syscall(SYS_rt_sigprocmask, SIG_SETMASK, interruptedMask, nullptr, sizeOfMask);
    for (int number = 1; number < mostSignals; ++number)
        if (number == SIGALRM || signalHooks[static_cast<std::size_t>(number)].load() != nullptr) unblock(number);
    (void)ring(SIGKILL, patienceInSeconds + 1, Hearer::anyThread); // for a handler that shuts its ears to the alarm
    std::exit(status);
}

void PosixCrashHooks::prepareThread() noexcept { ensureAlternateStack(); }

void PosixCrashHooks::pause() noexcept { pauseBriefly(); }

} // namespace tallyfoot
