#pragma once

#include "Tallyfoot/Platform/Dispatch.h"

namespace tallyfoot {

// Queues and timers of the process, on threads of its own that no signal reaches.
class PosixDispatch final : public Dispatch {
public:
    std::shared_ptr<DispatchQueue> makeQueue(std::string label) override;
    std::unique_ptr<DispatchSourceTimer> makeTimerSource(std::shared_ptr<DispatchQueue> queue) override;
};

} // namespace tallyfoot
