#pragma once

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>
#include <string_view>

// JSON as the platform reads and writes it.
namespace tallyfoot::json {

// A whole text: an object or an array, no fragment, nothing behind it, at most 512 levels, numbers
// that fit 64 bits or a double, no lone surrogates. Of duplicate keys the first wins. Nothing else
// parses. A byte-order mark is skipped.
std::optional<nlohmann::json> parse(std::string_view text);

std::optional<nlohmann::json> dictionary(std::string_view text); // parsed, and an object
std::optional<nlohmann::json> array(std::string_view text);      // parsed, and an array of objects

// Compact, solidus escaped, control characters as \u00xx, doubles in their shortest form without
// ".0". Nothing for NaN, infinities, ill-formed texts or more than 512 levels.
std::optional<std::string> write(const nlohmann::json& value);
std::optional<std::string> write(const nlohmann::json& value, int& levels); // says how deep it is, too

// The event text with its member "custom" turned from a text into the array of objects that it
// spells, the whole object compact; the text itself where that cannot be done.
std::string deEscapedCustomData(std::string_view text);

} // namespace tallyfoot::json
