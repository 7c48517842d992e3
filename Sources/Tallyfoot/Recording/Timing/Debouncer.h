#pragma once

#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Recording/Timing/Repeater.h"

#include <functional>
#include <memory>

namespace tallyfoot {

// A one-shot whose delay starts over with every call. Any thread. The callback runs on the timer's
// own queue with nothing held, so it may call again or release the debouncer.
class Debouncer {
public:
    Debouncer(Dispatch& dispatch, DebugConsole console, Repeater::Interval delay, std::function<void()> callback);
    ~Debouncer();

    void setCallback(std::function<void()> callback);
    void call();

private:
    class Target;

    std::shared_ptr<Repeater> makeTimer() const;

    Dispatch& dispatch_;
    const Repeater::Interval delay_;
    const std::shared_ptr<Target> target_;       // outlives the debouncer while a call is under way
    Exclusive<std::shared_ptr<Repeater>> timer_; // made by the first call
};

} // namespace tallyfoot
