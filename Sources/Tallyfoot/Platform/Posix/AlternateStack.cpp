#include "Tallyfoot/Platform/Posix/AlternateStack.h"

#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace tallyfoot {

namespace {

// Address space until it is used: a host's exit handlers may run on it.
constexpr std::size_t stackSize = std::size_t{256} << 10U;

std::size_t smallestUseful() noexcept {
    const auto least = ::sysconf(_SC_MINSIGSTKSZ); // what the processor's registers take
    return std::max<std::size_t>(std::size_t{16} << 10U, least > 0 ? 2 * static_cast<std::size_t>(least) : 0);
}

std::size_t guardSize() noexcept { return static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)); }

constinit thread_local bool isThere = false;

// At the thread's end. What somebody has put in its place meanwhile is left alone.
void release(void* room) {
    stack_t current{};
    if (::sigaltstack(nullptr, &current) == 0 && current.ss_sp == static_cast<char*>(room) + guardSize()) {
        stack_t none{};
        none.ss_flags = SS_DISABLE;
        if (::sigaltstack(&none, nullptr) != 0) return; // in use
    }
    ::munmap(room, guardSize() + stackSize);
    isThere = false;
}

struct Key {
    pthread_key_t key{};
    const bool isMade = ::pthread_key_create(&key, release) == 0;
};

const Key& key() {
    static const Key key;
    return key;
}

void* makeRoom() noexcept {
    const auto size = guardSize() + stackSize;
    void* room = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (room == MAP_FAILED) return nullptr;
    ::mprotect(room, guardSize(), PROT_NONE);
    return room;
}

void make() noexcept {
    stack_t current{};
    if (::sigaltstack(nullptr, &current) != 0) return;
    if ((current.ss_flags & SS_DISABLE) == 0 && current.ss_size >= smallestUseful()) return;
    if (!key().isMade) return;
    void* const room = makeRoom();
    if (room == nullptr) return;
    stack_t mine{};
    mine.ss_sp = static_cast<char*>(room) + guardSize();
    mine.ss_size = stackSize;
    if (::pthread_setspecific(key().key, room) == 0 && ::sigaltstack(&mine, nullptr) == 0) return;
    ::pthread_setspecific(key().key, nullptr);
    ::munmap(room, guardSize() + stackSize);
}

} // namespace

void ensureAlternateStack() noexcept {
    if (isThere) return;
    isThere = true; // once is enough where there is no room, too
    const int kept = errno;
    make();
    errno = kept;
}

} // namespace tallyfoot
