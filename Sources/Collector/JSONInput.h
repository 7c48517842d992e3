#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tallyfoot::collector {

// What a test tells the collector. All of it throws a std::exception that says what is wrong.

// Refuses what nests deeper than a record may: a value is copied and written by functions that call themselves.
nlohmann::json parsedInput(std::string_view text);

// The JSON library would take -1, 1.5 and true for whole numbers, too.
template <class Number>
Number wholeNumber(const nlohmann::json& value, Number largest = std::numeric_limits<Number>::max()) {
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > static_cast<std::uint64_t>(largest))
        throw std::invalid_argument("a whole number from 0 to " + std::to_string(largest) + " is expected");
    return value.get<Number>();
}

} // namespace tallyfoot::collector
