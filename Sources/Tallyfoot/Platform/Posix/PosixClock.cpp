#include "Tallyfoot/Platform/Posix/PosixClock.h"

namespace tallyfoot {

Date PosixClock::now() const noexcept { return std::chrono::system_clock::now(); }

} // namespace tallyfoot
