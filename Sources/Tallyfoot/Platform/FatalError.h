#pragma once

#include <string_view>

namespace tallyfoot {

// A violated precondition of the caller's own making: says so on standard error and ends the
// process with abort. Never used for bad data, full disks or dead networks.
[[noreturn]] void fatalError(std::string_view message) noexcept;

} // namespace tallyfoot
