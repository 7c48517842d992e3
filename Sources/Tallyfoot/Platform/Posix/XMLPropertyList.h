#pragma once

#include "Tallyfoot/Platform/PropertyList.h"

#include <optional>
#include <string_view>

// The XML form of property lists, in UTF-8. Any thread.
namespace tallyfoot::xmlpropertylist {

std::optional<PropertyList> decoded(std::string_view bytes);

} // namespace tallyfoot::xmlpropertylist
