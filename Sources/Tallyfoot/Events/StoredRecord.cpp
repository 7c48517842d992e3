#include "Tallyfoot/Events/StoredRecord.h"

#include "Tallyfoot/Events/JSON.h"

namespace tallyfoot {

namespace {

// Without one of these in its text no object has a member "custom": the name itself, or an escape
// that may spell it.
bool mayHaveCustomData(std::string_view line) {
    return line.find("\"custom\"") != std::string_view::npos || line.find("\\u") != std::string_view::npos;
}

} // namespace

void makeStoredRecord(std::string& line) {
    if (mayHaveCustomData(line)) line = json::deEscapedCustomData(line);
    line += recordSeparator;
}

} // namespace tallyfoot
