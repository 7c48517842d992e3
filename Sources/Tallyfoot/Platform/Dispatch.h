#pragma once

#include "Tallyfoot/Platform/DispatchQueue.h"
#include "Tallyfoot/Platform/DispatchSourceTimer.h"

#include <memory>
#include <string>

namespace tallyfoot {

// Makes queues and timers. Apple: Grand Central Dispatch.
class Dispatch {
public:
    virtual ~Dispatch() = default;
    virtual std::shared_ptr<DispatchQueue> makeQueue(std::string label) = 0;
    virtual std::unique_ptr<DispatchSourceTimer> makeTimerSource(std::shared_ptr<DispatchQueue> queue) = 0;
};

} // namespace tallyfoot
