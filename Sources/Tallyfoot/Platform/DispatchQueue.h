#pragma once

#include "Tallyfoot/Platform/FunctionRef.h"

#include <functional>
#include <memory>
#include <string>

namespace tallyfoot {

// A serial queue: at most one block runs at a time, and the blocks of one thread run in its order.
// No block may throw. Any thread. Apple: dispatch_queue_t.
class DispatchQueue {
public:
    virtual ~DispatchQueue() = default;

    // Runs the block on the calling thread once it is that caller's turn and returns after it.
    // With nobody ahead no thread is switched. From inside the turn the block runs at once.
    virtual void sync(FunctionRef<void()> block) = 0;

    // Runs the block later, on the queue's own thread. A waiting block is never starved. Blocks
    // still waiting when the queue is released are run all the same.
    virtual void async(std::function<void()> block) = 0;

    // Whether the calling thread holds the queue's turn.
    virtual bool isCurrent() const noexcept = 0;

    virtual const std::string& label() const noexcept = 0;
};

} // namespace tallyfoot
