#include "Crash/CrashPoints.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>

namespace tallyfoot::testing {

namespace {

constinit std::atomic<long> crashAt{0};
constinit std::atomic<long> points{0};
constinit std::atomic<void (*)()> crash{nullptr};
constinit std::atomic<bool> isClockSlow{false};
constinit std::string_view wantedKind; // changed while nobody is at a point

void point(std::string_view kind) {
    if (!wantedKind.empty() && wantedKind != kind) return;
    const int kept = errno;
    if (points.fetch_add(1) + 1 == crashAt.load()) crash.load()();
    errno = kept;
}

template <class... Arguments>
long around(std::string_view kind, long number, Arguments... arguments) {
    point(kind);
    const long result = ::syscall(number, arguments...);
    point(kind);
    return result;
}

} // namespace

void crashAtPoint(long number, void (*how)(), std::string_view kind) {
    crashAt.store(0);
    wantedKind = kind;
    crash.store(how);
    points.store(0);
    crashAt.store(number);
}

void sendFault() { ::syscall(SYS_tgkill, ::getpid(), ::syscall(SYS_gettid), SIGSEGV); }

void killAtOnce() { ::kill(::getpid(), SIGKILL); }

long pointsSince() { return points.load(); }

void slowDownTheClock() { isClockSlow.store(true); }

} // namespace tallyfoot::testing

// These stand before the C library's own, for this program and for the libraries that it uses.
using tallyfoot::testing::around;

extern "C" {

__attribute__((visibility("default"))) ssize_t write(int file, const void* bytes, size_t count) {
    return around(file == STDOUT_FILENO ? "console" : "write", SYS_write, file, bytes, count);
}

__attribute__((visibility("default"))) int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const auto mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : mode_t{0};
    va_end(rest);
    return static_cast<int>(around("open", SYS_openat, AT_FDCWD, path, flags, mode));
}

__attribute__((visibility("default"))) int close(int file) {
    return static_cast<int>(around("close", SYS_close, file));
}

__attribute__((visibility("default"))) int rename(const char* from, const char* to) noexcept {
    return static_cast<int>(around("rename", SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

__attribute__((visibility("default"))) int unlink(const char* path) noexcept {
    return static_cast<int>(around("unlink", SYS_unlinkat, AT_FDCWD, path, 0));
}

__attribute__((visibility("default"))) int mkdir(const char* path, mode_t mode) noexcept {
    return static_cast<int>(around("mkdir", SYS_mkdirat, AT_FDCWD, path, mode));
}

__attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const timespec moment{0, 20'000'000};
    if (tallyfoot::testing::isClockSlow.load()) ::syscall(SYS_nanosleep, &moment, nullptr);
    return static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
}

__attribute__((visibility("default"))) int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    using Function = int (*)(pthread_mutex_t*);
    static const auto real = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    const int result = real(mutex);
    tallyfoot::testing::point("lock");
    return result;
}
}
