#pragma once

#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Recording/Timing/Repeater.h"

#include <functional>
#include <memory>

namespace tallyfoot {

// A one-shot whose delay starts over with every call. Any thread.
class Debouncer {
public:
    Debouncer(Dispatch& dispatch, DebugConsole console, Repeater::Interval delay, std::function<void()> callback);
    ~Debouncer();

    void setCallback(std::function<void()> callback);
    void call();

private:
    // (the implementer of this room shapes what follows)
};

} // namespace tallyfoot
