#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace tallyfoot {

// A property-list value. Dates and nulls, which nothing here needs, read as no value at all.
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
