#include "Tallyfoot/Capture/ControlAttributes.h"

#include "Tallyfoot/Capture/IgnoreLists.h"
#include "Tallyfoot/Capture/NumberText.h"
#include "Tallyfoot/Events/DateDescription.h"
#include "Tallyfoot/Events/Text.h"

namespace tallyfoot {

namespace {

Attributes labelled(std::string label) {
    Attributes attributes;
    attributes.set(LogAttribute::evtLabel, std::move(label));
    return attributes;
}

Attributes tapped(std::string label) {
    auto attributes = labelled(std::move(label));
    attributes.set(LogAttribute::evtAction, "tap");
    return attributes;
}

std::string prefixed(const PlatformObject& sender, std::string_view value) {
    return text::prefix(value, sender.customName());
}

} // namespace

Attributes ControlAttributes::button(const PlatformObject& button) {
    auto label = button.customName();
    if (label.empty()) label = button.text(Message::currentTitle).value_or(std::string());
    return tapped(std::move(label));
}

Attributes ControlAttributes::segmentControl(const PlatformObject& control) {
    auto label = control.customName();
    if (label.empty()) {
        const auto selected = control.integer(Message::selectedSegmentIndex).value_or(-1);
        if (selected >= 0) label = control.text(Message::titleForSegmentAtIndex, selected).value_or(std::string());
    }
    return tapped(std::move(label));
}

Attributes ControlAttributes::barButton(const PlatformObject& item) {
    auto label = item.customName();
    if (label.empty()) label = item.text(Message::title).value_or(std::string());
    if (label.empty())
        label = text::stringAfter(item.text(Message::description).value_or(std::string()), "systemItem=")
                    .value_or(std::string());
    return tapped(std::move(label));
}

Attributes ControlAttributes::stepper(const PlatformObject& stepper) {
    return tapped(prefixed(stepper, shortestText(stepper.doubleValue(Message::value).value_or(0))));
}

Attributes ControlAttributes::switch_(const PlatformObject& control) {
    return tapped(prefixed(control, control.truth(Message::isOn) ? "true" : "false"));
}

Attributes ControlAttributes::pageControl(const PlatformObject& control) {
    return labelled(prefixed(control, std::to_string(control.integer(Message::currentPage).value_or(0))));
}

Attributes ControlAttributes::datePicker(const PlatformObject& picker) {
    const auto seconds = picker.timeIntervalSince1970(Message::date);
    return labelled(prefixed(picker, seconds ? dateDescription(*seconds) : std::string()));
}

Attributes ControlAttributes::slider(const PlatformObject& slider) {
    if (slider.truth(Message::isContinuous)
        && slider.platform().messages.callStackSymbolsContain(CallStackMarkers::sliderTracking))
        return {};
    auto attributes = labelled(prefixed(slider, shortestText(slider.floatValue(Message::value).value_or(0))));
    attributes.set(LogAttribute::evtAction, "Slide");
    return attributes;
}

Attributes ControlAttributes::refreshControl(const PlatformObject& control) {
    auto attributes = labelled(control.customName());
    attributes.set(LogAttribute::evtAction, "Refreshed");
    return attributes;
}

} // namespace tallyfoot
