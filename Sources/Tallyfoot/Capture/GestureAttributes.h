#pragma once

#include "Tallyfoot/Capture/PlatformObject.h"
#include "Tallyfoot/Events/Attributes.h"

namespace tallyfoot {

// What gesture recognizers say about a gesture; none for a state that is not recorded. A customName
// replaces the label.
struct GestureAttributes {
    static Attributes tap(const PlatformObject& recognizer);
    static Attributes swipe(const PlatformObject& recognizer);
    static Attributes pinch(const PlatformObject& recognizer);
    static Attributes longPress(const PlatformObject& recognizer); // when it begins, ends, is cancelled or fails
    static Attributes pan(const PlatformObject& recognizer);       // when it ends
};

} // namespace tallyfoot
