#include "Tallyfoot/Events/StoredRecord.h"

#include "Tallyfoot/Events/JSON.h"

namespace tallyfoot {

void makeStoredRecord(std::string& line, const Attributes& properties) {
    if (properties.contains(LogAttribute::custom)) line = json::deEscapedCustomData(line);
    line += recordSeparator;
}

} // namespace tallyfoot
