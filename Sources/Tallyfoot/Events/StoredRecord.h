#pragma once

#include "Tallyfoot/Events/Attributes.h"

#include <string>
#include <string_view>

namespace tallyfoot {

// Stands behind every record in a log file; nothing else separates them.
inline constexpr std::string_view recordSeparator = "jsonsplit";

// Makes a stored record of the text that these properties were formatted to, in place: custom data
// turned from a JSON text into real JSON (`deEscapedCustomData`), then the separator. What has no
// usable custom data, or none that there is memory for, keeps its layout.
void makeStoredRecord(std::string& line, const Attributes& properties);

} // namespace tallyfoot
