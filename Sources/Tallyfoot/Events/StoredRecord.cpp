#include "Tallyfoot/Events/StoredRecord.h"

#include "Tallyfoot/Events/JSON.h"

#include <exception>

namespace tallyfoot {

void makeStoredRecord(std::string& line, const Attributes& properties) {
    if (properties.contains(LogAttribute::custom)) {
        try {
            line = json::deEscapedCustomData(line);
        } catch (const std::exception&) { // no memory for a second text: the first one stays
        }
    }
    line += recordSeparator;
}

} // namespace tallyfoot
