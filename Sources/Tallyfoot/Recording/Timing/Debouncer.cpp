#include "Tallyfoot/Recording/Timing/Debouncer.h"

#include <utility>

namespace tallyfoot {

namespace {

std::shared_ptr<std::function<void()>> shared(std::function<void()> callback) {
    return callback ? std::make_shared<std::function<void()>>(std::move(callback)) : nullptr;
}

} // namespace

// What the timer fires at.
class Debouncer::Target {
public:
    Target(DebugConsole console, std::function<void()> callback)
        : console_(console), callback_(shared(std::move(callback))) {}

    void setCallback(std::function<void()> callback) { callback_.exchange(shared(std::move(callback))); }

    void fire() const {
        if (const auto callback = callback_.copy()) {
            (*callback)();
        } else {
            console_.print("Debouncer fired but callback not set.");
        }
    }

private:
    const DebugConsole console_;
    Exclusive<std::shared_ptr<std::function<void()>>> callback_;
};

Debouncer::Debouncer(Dispatch& dispatch, DebugConsole console, Repeater::Interval delay, std::function<void()> callback)
    : dispatch_(dispatch), delay_(delay), target_(std::make_shared<Target>(console, std::move(callback))) {}

Debouncer::~Debouncer() = default;

void Debouncer::setCallback(std::function<void()> callback) { target_->setCallback(std::move(callback)); }

void Debouncer::call() {
    bool isFirst = false;
    const auto timer = timer_.modify([&](std::shared_ptr<Repeater>& existing) {
        isFirst = !existing;
        if (isFirst) existing = makeTimer();
        return existing;
    });
    // Should another thread's call slip in before this start, then it has started the timer, with
    // one full delay, and there is nothing left to do.
    if (isFirst) {
        timer->start();
    } else {
        timer->reset(delay_, true);
    }
}

std::shared_ptr<Repeater> Debouncer::makeTimer() const {
    return Repeater::make(dispatch_, delay_, Repeater::Mode::once(), DispatchTimeInterval::nanoseconds(0), nullptr,
                          [weak = std::weak_ptr(target_)](Repeater&) {
                              if (const auto target = weak.lock()) target->fire();
                          });
}

} // namespace tallyfoot
