#pragma once

#include "Tallyfoot/Capture/PlatformObject.h"
#include "Tallyfoot/Events/Attributes.h"

namespace tallyfoot {

// What controls and bar items say about an interaction. The customName replaces the label of those that
// have texts, and stands before the value of those that have values.
struct ControlAttributes {
    static Attributes button(const PlatformObject& button);
    static Attributes segmentControl(const PlatformObject& control);
    static Attributes barButton(const PlatformObject& item);
    static Attributes stepper(const PlatformObject& stepper);
    static Attributes switch_(const PlatformObject& control);
    static Attributes pageControl(const PlatformObject& control);
    static Attributes datePicker(const PlatformObject& picker);
    static Attributes slider(const PlatformObject& slider); // none while a continuous one is dragged
    static Attributes refreshControl(const PlatformObject& control);
};

} // namespace tallyfoot
