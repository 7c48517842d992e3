#include "Tallyfoot/Platform/Posix/ExitGate.h"

#include "Tallyfoot/Platform/Posix/Condition.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>

namespace tallyfoot {

namespace {

// Never released: the gate outlives everything that the process's end destroys.
struct Gate {
    const pid_t process = ::getpid();
    Mutex mutex;
    Condition left;
    int inside TALLYFOOT_GUARDED_BY(mutex) = 0;
    bool isClosed TALLYFOOT_GUARDED_BY(mutex) = false;
};

// A forked child has none of the threads, and may have the mutex as one of them held it: it begins anew.
Gate& gate() {
    static std::atomic<Gate*> current = new Gate;
    Gate* gate = current;
    if (gate->process == ::getpid()) return *gate;
    auto mine = std::make_unique<Gate>();
    return current.compare_exchange_strong(gate, mine.get()) ? *mine.release() : *gate;
}

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

} // namespace

void ExitGate::install() {
    gate();
    std::atexit(close);
}

ExitGate::Pass::Pass() {
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

ExitGate::Pass::~Pass() {
    auto& gate = tallyfoot::gate();
    isInside = false;
    MutexLock lock(gate.mutex);
    --gate.inside;
    gate.left.notifyAll();
}

} // namespace tallyfoot
