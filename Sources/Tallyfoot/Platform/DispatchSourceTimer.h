#pragma once

#include <chrono>
#include <functional>
#include <optional>

namespace tallyfoot {

// A timer that calls back on one serial queue. It starts suspended. Any thread; none of the calls
// waits for a handler that is running, so each may be made from inside the handler, destruction
// included. Missed ticks arrive as one call. Apple: dispatch_source_t of type timer.
class DispatchSourceTimer {
public:
    // Releasing cancels. Whoever releases a suspended timer on Apple's system must resume it first.
    virtual ~DispatchSourceTimer() = default;

    // First call `deadline` from now, then every `repeating` (none: once). A negative deadline is
    // now; a zero interval counts as one nanosecond; `nanoseconds::max()` never comes.
    virtual void schedule(std::chrono::nanoseconds deadline, std::optional<std::chrono::nanoseconds> repeating,
                          std::chrono::nanoseconds leeway) = 0;
    virtual void setEventHandler(std::function<void()> handler) = 0; // an empty one clears it
    virtual void resume() = 0;                                       // resuming once too often is fatal
    virtual void suspend() = 0;                                      // nests; a due tick waits for the resume
    virtual void cancel() = 0;                                       // final; no handler starts afterwards
};

} // namespace tallyfoot
