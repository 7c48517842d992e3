#include "Tallyfoot/Events/StoredRecord.h"

#include "Tallyfoot/Events/JSON.h"

namespace tallyfoot {

namespace {

// Looked for by its end: a record has many quotation marks and few letters before one.
bool hasName(std::string_view line) {
    constexpr std::string_view end = "m\"";
    for (auto at = line.find(end); at != std::string_view::npos; at = line.find(end, at + end.size()))
        if (line.substr(0, at + end.size()).ends_with("\"custom\"")) return true;
    return false;
}

// Without one of these in its text no object has a member "custom": the name itself, or an escape
// that may spell it.
bool mayHaveCustomData(std::string_view line) { return hasName(line) || line.find("\\u") != std::string_view::npos; }

} // namespace

void makeStoredRecord(std::string& line) {
    if (mayHaveCustomData(line)) line = json::deEscapedCustomData(line);
    line += recordSeparator;
}

} // namespace tallyfoot
