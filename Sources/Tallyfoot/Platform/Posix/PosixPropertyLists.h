#pragma once

#include "Tallyfoot/Platform/PropertyLists.h"

#include <cstddef>

namespace tallyfoot {

class PosixPropertyLists final : public PropertyLists {
public:
    static constexpr std::size_t maximumSize = 16u << 20; // bytes; a larger one is no property list

    std::optional<PropertyList> propertyList(std::string_view bytes) const override;
    std::string data(const PropertyList& list) const override;
    std::optional<PropertyList::Dictionary> dictionary(const std::string& path) const override;
};

} // namespace tallyfoot
