#include "Tallyfoot/Platform/Posix/ExitGate.h"

#include "Tallyfoot/Platform/Posix/Condition.h"

#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <new>

namespace tallyfoot {

namespace {

// Never released: the gate outlives everything that the process's end destroys.
struct Gate {
    Mutex mutex;
    Condition left;
    int inside TALLYFOOT_GUARDED_BY(mutex) = 0;
    bool isClosed TALLYFOOT_GUARDED_BY(mutex) = false;
};

Gate& gate() {
    static auto& gate = *new Gate;
    return gate;
}

// A forked child has none of the threads, and may have the mutex as one of them held it.
void beginAnew() { new (&gate()) Gate; }

thread_local bool isInside = false;

// A call under way is short. One that is not, or that crashed, does not keep the process alive.
void close() {
    auto& gate = tallyfoot::gate();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(250);
    MutexLock lock(gate.mutex);
    gate.isClosed = true;
    while (gate.inside > 0 && !isInside && std::chrono::steady_clock::now() < deadline)
        gate.left.waitUntil(gate.mutex, deadline);
}

[[noreturn]] void stay() {
    for (;;) ::pause();
}

void enter() {
    auto& gate = tallyfoot::gate();
    bool isClosed = false;
    {
        MutexLock lock(gate.mutex);
        isClosed = gate.isClosed;
        if (!isClosed) ++gate.inside;
    }
    if (isClosed) stay();
    isInside = true;
}

void leave() {
    auto& gate = tallyfoot::gate();
    isInside = false;
    MutexLock lock(gate.mutex);
    --gate.inside;
    gate.left.notifyAll();
}

// A thread's end goes round all that is kept for threads, in no order that we could rely on, and comes
// again to what was set once more: our second time is after everybody's first.
struct AtThreadsEnd {
    pthread_key_t key{};
    const bool isMade = ::pthread_key_create(&key, visit) == 0;
    char firstRound = 0;
    char secondRound = 0;

    static AtThreadsEnd& shared() {
        static AtThreadsEnd shared;
        return shared;
    }

    static void visit(void* round) {
        auto& end = shared();
        if (round != &end.firstRound || ::pthread_setspecific(end.key, &end.secondRound) != 0) leave();
    }
};

} // namespace

void ExitGate::install() {
    gate();
    ::pthread_atfork(nullptr, nullptr, beginAnew);
    std::atexit(close);
}

void ExitGate::passUntilThreadEnds() {
    auto& end = AtThreadsEnd::shared();
    if (!end.isMade) return;
    enter();
    if (::pthread_setspecific(end.key, &end.firstRound) != 0) leave();
}

ExitGate::Pass::Pass() { enter(); }

ExitGate::Pass::~Pass() { leave(); }

} // namespace tallyfoot
