#include "Tallyfoot/Capture/Gestures.h"

#include "Tallyfoot/Capture/Classification.h"
#include "Tallyfoot/Capture/IgnoreLists.h"

namespace tallyfoot {

namespace {

bool isGesture(std::optional<ITFClass> itfClass) {
    return itfClass && *itfClass >= ITFClass::tapGesture && *itfClass <= ITFClass::panGesture;
}

bool isIgnored(const PlatformObject& recognizer, ITFClass itfClass) {
    if (IgnoreLists::contains(IgnoreLists::gestures, recognizer.className())) return true;
    const auto view = recognizer.object(Message::view);
    if (IgnoreLists::contains(IgnoreLists::gestures, view.className())) return true;
    const bool isPress = itfClass == ITFClass::tapGesture || itfClass == ITFClass::longPressGesture;
    return isPress && view.isKindOf(IgnoreLists::webBrowserView);
}

} // namespace

void Gestures::addTarget(const PlatformObject& recognizer) const {
    if (!isGesture(classify(recognizer))) return;
    auto& platform = recognizer.platform();
    platform.messages.addTarget(recognizer.reference(), recognizer.reference(),
                                platform.runtime.sel_registerName(selectorName(MethodBody::gestureAction)));
}

void Gestures::recordGesture(const PlatformObject& recognizer) const {
    const auto itfClass = classify(recognizer);
    if (itfClass && !isIgnored(recognizer, *itfClass))
        actions_.logInteraction(recognizer, *itfClass, EventType::gesture);
}

} // namespace tallyfoot
