#pragma once

#include "Tallyfoot/Capture/ITFClass.h"
#include "Tallyfoot/Events/Attributes.h"
#include "Tallyfoot/Events/EventType.h"
#include "Tallyfoot/Platform/Clock.h"
#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Platform/Screen.h"

#include <string>
#include <string_view>

namespace tallyfoot {

// All that capture asks of the facade. Any thread.
class CaptureFacade {
public:
    virtual ~CaptureFacade() = default;

    virtual void log(EventType type, Attributes& attributes) = 0;   // adds to the attributes, in their place
    virtual std::string category(ITFClass itfClass) const = 0;      // the custom title, else the class's name
    virtual bool isIgnored(std::string_view category) const = 0;    // by the host
    virtual void setCurrentScreenTitle(std::string_view title) = 0; // from here on; "" where no screen is shown
    virtual void setScreenSize(ScreenBounds bounds) = 0;            // what devices are described with from here on
    virtual const DebugConsole& console() const = 0;
    virtual const Clock& clock() const = 0;
};

} // namespace tallyfoot
