#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace tallyfoot {

// A property-list value. A date reads as its seconds since the first of January 2001, a unique id
// as the dictionary {"CF$UID": n}, which is how XML writes it; and that dictionary is written as one.
struct PropertyList {
    struct Data {
        std::string bytes;
        bool operator==(const Data&) const = default;
    };
    using Array = std::vector<PropertyList>;
    using Dictionary = std::map<std::string, PropertyList, std::less<>>;

    std::variant<bool, std::int64_t, double, std::string, Data, Array, Dictionary> value;

    template <class T>
    const T* as() const noexcept {
        return std::get_if<T>(&value);
    }
    bool operator==(const PropertyList&) const = default;
};

} // namespace tallyfoot
