#pragma once

#include "Tallyfoot/Platform/PropertyList.h"

#include <cstdint>

namespace tallyfoot {

// What a stored value reads as where a number is asked for: a text as its leading number, behind
// white space and a sign; true as 1; anything else that is no number as 0. A number beyond the range
// reads as the nearest that fits, a fraction is cut off.
std::int64_t integerValue(const PropertyList& list);
double realValue(const PropertyList& list);

} // namespace tallyfoot
