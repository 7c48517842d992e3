#pragma once

#include "Support/ManualClock.h"

#include "Tallyfoot/Platform/Dispatch.h"

#include <chrono>
#include <cstddef>
#include <memory>

namespace tallyfoot::testing {

// A dispatch whose time stands still: timers fire only in `advance`, in the order of their deadlines.
// Blocks given to a queue's `async` wait for the next `drain`, `advance` or `sync` and run on the
// thread that calls it, in the order in which they were given, whatever their queues. A queue's
// `sync` excludes other threads as the real one does. With `realQueues` queues have threads of their
// own, and `drain` waits for the blocks that they had when it was called. Any thread.
class ManualDispatch final : public Dispatch {
public:
    struct Options {
        bool realQueues = false;
        std::shared_ptr<ManualClock> clock; // moves along with `advance`
    };

    ManualDispatch();
    explicit ManualDispatch(Options options);
    ~ManualDispatch() override;

    std::shared_ptr<DispatchQueue> makeQueue(std::string label) override;
    std::unique_ptr<DispatchSourceTimer> makeTimerSource(std::shared_ptr<DispatchQueue> queue) override;

    void advance(std::chrono::nanoseconds step); // returns after the handlers that were due
    void drain();                                // returns after the blocks that wait and all that they add

    std::size_t waitingBlocks() const; // always 0 with real queues
    std::size_t armedTimers() const;   // a tick is ahead of them, suspended ones included

private:
    class Work; // shared with the queues and timers, which may outlive the dispatch
    class Queue;
    std::shared_ptr<Work> work_;
};

} // namespace tallyfoot::testing
