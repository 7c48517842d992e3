#pragma once

#include "Collector/Problem.h"

#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot::collector {

struct CheckedRecord {
    std::string evtId;
    std::string evtType;
    std::string text; // compact, otherwise as it came
};

// Checks one record as it stands in a log, `text` being a whole JSON object: its "evtId" and "evtType",
// the names and kinds of its members, and the layout the format promises (one member a line; compact
// when "custom" is an array). Nothing comes back without an "evtId" and an "evtType".
std::optional<CheckedRecord> checkRecord(std::string_view text, const std::string& file, Problems& problems);

} // namespace tallyfoot::collector
