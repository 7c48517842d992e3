#pragma once

#include "Tallyfoot/Export.h"

#include <string_view>

namespace tallyfoot {

// A violated precondition of the caller's own making: says so on standard error and ends the
// process with abort. The bindings of the library use it, too. Never used for bad data, full disks or dead networks.
[[noreturn]] TALLYFOOT_EXPORT void fatalError(std::string_view message) noexcept;

} // namespace tallyfoot
