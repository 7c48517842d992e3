#pragma once

#include "Tallyfoot/Platform/Dispatch.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace tallyfoot::testing {

// Lets the test step in where another thread might: right before the recorder takes its turn, and
// right after it has given it back.
class SteppedDispatch final : public Dispatch {
public:
    explicit SteppedDispatch(std::shared_ptr<Dispatch> next) : next_(std::move(next)) {}

    std::shared_ptr<DispatchQueue> makeQueue(std::string label) override;
    std::unique_ptr<DispatchSourceTimer> makeTimerSource(std::shared_ptr<DispatchQueue> queue) override;

    std::function<void()> beforeTurn;
    std::function<void()> afterTurn;

private:
    class Queue;

    void step(const std::function<void()>& into); // not into itself

    std::shared_ptr<Dispatch> next_;
    bool isInside_ = false;
};

} // namespace tallyfoot::testing
