#pragma once

#include "Tallyfoot/Events/Attributes.h"
#include "Tallyfoot/Events/EventType.h"
#include "Tallyfoot/Platform/DebugConsole.h"

#include <string_view>

namespace tallyfoot {

// What crash capture needs of the facade. Any thread.
class CrashFacade {
public:
    virtual ~CrashFacade() = default;

    virtual void log(EventType type, Attributes& attributes) = 0; // on disk when it returns
    virtual bool isIgnored(std::string_view category) const = 0;
    virtual const DebugConsole& console() const = 0;
};

} // namespace tallyfoot
