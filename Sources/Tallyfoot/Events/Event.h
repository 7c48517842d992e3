#pragma once

#include "Tallyfoot/Events/Attributes.h"
#include "Tallyfoot/Events/EventType.h"

namespace tallyfoot {

// One interaction: LogAttribute.h has what can be said about it, FileEventFormatter.h the text that it
// is stored as. Only the properties are written; the type reaches the record through the attribute
// evtType alone. Values may hold any bytes: the formatter makes them well-formed UTF-8.
struct Event {
    EventType type;
    Attributes properties;
};

} // namespace tallyfoot
