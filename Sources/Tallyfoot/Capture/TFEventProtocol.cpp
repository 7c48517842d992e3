#include "Tallyfoot/Capture/TFEventProtocol.h"

#include "Tallyfoot/Capture/ControlAttributes.h"
#include "Tallyfoot/Capture/GestureAttributes.h"

namespace tallyfoot {

namespace {

using Describe = Attributes (*)(const PlatformObject& sender);

// A swipe action's button is not among them: what is recorded of it depends on how it was touched.
constexpr Describe describe(ITFClass itfClass) noexcept {
    switch (itfClass) {
    case ITFClass::barButton: return ControlAttributes::barButton;
    case ITFClass::button: return ControlAttributes::button;
    case ITFClass::segmentControl: return ControlAttributes::segmentControl;
    case ITFClass::stepper: return ControlAttributes::stepper;
    case ITFClass::slider: return ControlAttributes::slider;
    case ITFClass::switch_: return ControlAttributes::switch_;
    case ITFClass::datePicker: return ControlAttributes::datePicker;
    case ITFClass::pageControl: return ControlAttributes::pageControl;
    case ITFClass::refreshControl: return ControlAttributes::refreshControl;
    case ITFClass::tapGesture: return GestureAttributes::tap;
    case ITFClass::swipeGesture: return GestureAttributes::swipe;
    case ITFClass::pinchGesture: return GestureAttributes::pinch;
    case ITFClass::longPressGesture: return GestureAttributes::longPress;
    case ITFClass::panGesture: return GestureAttributes::pan;
    default: return nullptr;
    }
}

} // namespace

bool TFEventProtocol::conforms() const noexcept { return describe(itfClass_) != nullptr; }

Attributes TFEventProtocol::attributes() const { return conforms() ? describe(itfClass_)(sender_) : Attributes(); }

} // namespace tallyfoot
