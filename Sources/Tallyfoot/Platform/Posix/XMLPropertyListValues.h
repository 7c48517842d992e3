#pragma once

#include "Tallyfoot/Platform/PropertyList.h"

#include <optional>
#include <string>
#include <string_view>

// What stands between the tags of an XML property list's single values. Any thread.
namespace tallyfoot::xmlpropertylist {

inline constexpr std::string_view whiteSpace = " \t\r\n";

// False for a reference that is none, or to no character.
bool appendUnescaped(std::string& into, std::string_view text);

// The value of an element true, false, integer, real, date or data with this content.
std::optional<PropertyList> scalar(std::string_view element, std::string_view content);

} // namespace tallyfoot::xmlpropertylist
