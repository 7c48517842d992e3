#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace tallyfoot {

// The platform's description of a date, "yyyy-MM-dd HH:mm:ss +0000", in UTC, down to the second. Any thread.
std::string_view dateDescription(std::chrono::sys_seconds second); // valid until the thread asks again
std::string dateDescription(double secondsSince1970);              // "" beyond any year that a calendar counts

} // namespace tallyfoot
