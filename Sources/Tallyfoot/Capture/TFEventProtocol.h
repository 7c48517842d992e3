#pragma once

#include "Tallyfoot/Capture/ITFClass.h"
#include "Tallyfoot/Capture/PlatformObject.h"
#include "Tallyfoot/Events/Attributes.h"

namespace tallyfoot {

// What a sender says about an interaction with it: its label, what was done, and now and then another
// event type. Controls, bar items and the five gesture recognizers conform.
class TFEventProtocol {
public:
    TFEventProtocol(const PlatformObject& sender, ITFClass itfClass) : sender_(sender), itfClass_(itfClass) {}

    bool conforms() const noexcept;
    bool logEnabled() const { return sender_.logEnabled(); }
    Attributes attributes() const; // none: this interaction is not to be recorded

private:
    PlatformObject sender_;
    ITFClass itfClass_;
};

} // namespace tallyfoot
