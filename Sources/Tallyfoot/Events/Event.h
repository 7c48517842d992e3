#pragma once

#include "Tallyfoot/Events/Attributes.h"
#include "Tallyfoot/Events/EventType.h"

namespace tallyfoot {

// One interaction. Only the properties are written; the type reaches the record through the
// attribute evtType alone. Every value is well-formed UTF-8 by the time an event is formatted.
struct Event {
    EventType type;
    Attributes properties;
};

} // namespace tallyfoot
