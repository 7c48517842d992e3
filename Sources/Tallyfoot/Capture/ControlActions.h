#pragma once

#include "Tallyfoot/Capture/CaptureFacade.h"
#include "Tallyfoot/Capture/ITFClass.h"
#include "Tallyfoot/Capture/PlatformObject.h"

#include <string_view>

namespace tallyfoot {

// What a sender did becomes an event: an action that goes through the application, or a gesture. Which
// sender is recorded, and how, is decided here alone.
class ControlActions {
public:
    explicit ControlActions(CaptureFacade& facade) : facade_(facade) {}

    // An action about to be sent, by its selector's name.
    void recordAction(std::string_view action, const PlatformObject& sender) const;

    // The sender's own account of it, unless there is none or the sender is not to be recorded.
    void logInteraction(const PlatformObject& sender, ITFClass itfClass, EventType defaultType) const;

private:
    void recordAccessoryButton(std::string category) const;
    void recordSwipeAction(const PlatformObject& sender, std::string category) const;
    void log(EventType defaultType, Attributes& attributes, std::string category) const;

    CaptureFacade& facade_;
};

} // namespace tallyfoot
