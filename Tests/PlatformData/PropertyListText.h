#pragma once

#include "Tallyfoot/Platform/PropertyList.h"

#include <string>
#include <utility>

namespace tallyfoot::testing {

inline PropertyList text(std::string characters) { return {std::move(characters)}; }

} // namespace tallyfoot::testing
