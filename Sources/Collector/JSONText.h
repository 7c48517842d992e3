#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <string_view>

namespace tallyfoot::collector {

// The same JSON without white space between its tokens. Tokens stay letter for letter as they were
// written, so that a number keeps its digits. The text must be valid JSON.
std::string compacted(std::string_view json);

// Compact JSON of an object without nested values, laid out as the platform's pretty writer does:
// one member a line, two blanks before it, " : " between key and value.
std::string prettyPrinted(std::string_view compactObject);

// A value on one line. Ill-formed UTF-8 becomes U+FFFD.
std::string jsonText(const nlohmann::ordered_json& value);

// A JSON string literal. Ill-formed UTF-8 becomes U+FFFD.
std::string jsonString(std::string_view text);

// Whether all of it is well-formed UTF-8.
bool isUTF8(std::string_view text);

} // namespace tallyfoot::collector
