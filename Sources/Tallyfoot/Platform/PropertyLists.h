#pragma once

#include "Tallyfoot/Platform/PropertyList.h"

#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

// Reads property lists, XML and binary, and writes binary ones. Any thread. Anything malformed,
// too large or too deep is no property list. Apple: NSPropertyListSerialization.
class PropertyLists {
public:
    virtual ~PropertyLists() = default;
    virtual std::optional<PropertyList> propertyList(std::string_view bytes) const = 0;
    virtual std::string data(const PropertyList& list) const = 0;

    // Apple: -[NSDictionary initWithContentsOfFile:].
    virtual std::optional<PropertyList::Dictionary> dictionary(const std::string& path) const = 0;
};

} // namespace tallyfoot
