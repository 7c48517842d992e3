#pragma once

#include "Tallyfoot/Events/Event.h"

#include <optional>
#include <string>

namespace tallyfoot {

// Turns an event into its text; nothing when it cannot be formatted.
class EventFormatter {
public:
    virtual ~EventFormatter() = default;
    virtual std::optional<std::string> format(const Event& event) const = 0;
};

} // namespace tallyfoot
