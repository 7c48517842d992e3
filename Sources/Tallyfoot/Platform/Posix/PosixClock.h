#pragma once

#include "Tallyfoot/Platform/Clock.h"

namespace tallyfoot {

// The system's real-time clock.
class PosixClock final : public Clock {
public:
    Date now() const noexcept override;
};

} // namespace tallyfoot
