#pragma once

#include "Tallyfoot/Platform/DispatchQueue.h"

namespace tallyfoot {

// A turn that callers take on their own threads, and one thread, started by the first `async`, for
// the blocks that run later. A `sync` finds its turn after the async blocks that wait already. Where
// the system has no thread to give, the timers' thread stands in for it, or whoever comes next.
class PosixDispatchQueue final : public DispatchQueue {
public:
    explicit PosixDispatchQueue(std::string label);

    // May be called from anywhere, from the queue's own blocks too. Waits for nothing.
    ~PosixDispatchQueue() override;

    void sync(FunctionRef<void()> block) override;
    void async(std::function<void()> block) override;
    bool isCurrent() const noexcept override;
    const std::string& label() const noexcept override;

private:
    class State; // shared with the queue's thread, which outlives the queue
    std::shared_ptr<State> state_;
};

} // namespace tallyfoot
