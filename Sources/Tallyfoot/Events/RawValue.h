#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace tallyfoot {

// An enumeration whose cases stand for texts keeps them in one table, in declaration order, found
// through `rawValueTable(Enumeration)`. Both directions are looked up in it, also while compiling.
template <class Enumeration>
concept TextBacked = requires {
    rawValueTable(Enumeration{});
};

// The case whose text this is, matched exactly; nothing for any other text.
template <TextBacked Enumeration>
constexpr std::optional<Enumeration> fromRawValue(std::string_view text) noexcept {
    const auto& table = rawValueTable(Enumeration{});
    for (std::size_t index = 0; index < table.size(); ++index)
        if (table[index] == text) return static_cast<Enumeration>(index);
    return std::nullopt;
}

} // namespace tallyfoot
