#include "Recording/SteppedDispatch.h"

namespace tallyfoot::testing {

class SteppedDispatch::Queue final : public DispatchQueue {
public:
    Queue(SteppedDispatch& dispatch, std::shared_ptr<DispatchQueue> next)
        : dispatch_(dispatch), next_(std::move(next)) {}
    void sync(FunctionRef<void()> block) override {
        if (isCurrent()) return next_->sync(block);
        dispatch_.step(dispatch_.beforeTurn);
        next_->sync(block);
        dispatch_.step(dispatch_.afterTurn);
    }
    void async(std::function<void()> block) override { next_->async(std::move(block)); }
    bool isCurrent() const noexcept override { return next_->isCurrent(); }
    const std::string& label() const noexcept override { return next_->label(); }

private:
    SteppedDispatch& dispatch_;
    std::shared_ptr<DispatchQueue> next_;
};

std::shared_ptr<DispatchQueue> SteppedDispatch::makeQueue(std::string label) {
    auto queue = next_->makeQueue(label);
    if (label != "EventRecorder") return queue;
    return std::make_shared<Queue>(*this, std::move(queue));
}

std::unique_ptr<DispatchSourceTimer> SteppedDispatch::makeTimerSource(std::shared_ptr<DispatchQueue> queue) {
    return next_->makeTimerSource(std::move(queue));
}

void SteppedDispatch::step(const std::function<void()>& into) {
    if (!into || std::exchange(isInside_, true)) return;
    into();
    isInside_ = false;
}

} // namespace tallyfoot::testing
