#include "Tallyfoot/Events/EventType.h"

#include "Tallyfoot/Platform/FatalError.h"

namespace tallyfoot {

std::string_view rawValue(EventType type) noexcept {
    const auto place = static_cast<std::size_t>(type);
    if (place >= eventTypeTexts.size()) fatalError("unexpected EventType");
    return eventTypeTexts[place];
}

} // namespace tallyfoot
