#pragma once

#include "Tallyfoot/Platform/PropertyList.h"

#include <optional>
#include <string_view>

// The XML form of property lists, in UTF-8. A reader of our own: the elements are eleven, the general
// readers take the host's locale for numbers, and a text that they cut short is worse than none. Any thread.
namespace tallyfoot::xmlpropertylist {

// Nothing for what is malformed, too deep or too heavy, as in the binary form. Only `plist` has
// attributes, which are not looked at. Of equal keys the last wins; an integer above what 64 bits
// with a sign hold reads as a double, one beyond 64 bits is malformed.
std::optional<PropertyList> decoded(std::string_view bytes);

} // namespace tallyfoot::xmlpropertylist
