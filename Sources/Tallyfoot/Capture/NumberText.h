#pragma once

#include <string>

namespace tallyfoot {

// Numbers as decimal text, whatever the locale.
std::string shortestText(double number); // the fewest digits that read back the same, at least "3.0"
std::string shortestText(float number);
std::string twoDecimals(double number); // "75.50"

} // namespace tallyfoot
