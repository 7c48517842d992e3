#include "Tallyfoot/Capture/GestureAttributes.h"

#include "Tallyfoot/Capture/TextContainerSubviews.h"
#include "Tallyfoot/Events/EventType.h"

#include <array>

namespace tallyfoot {

namespace {

enum class State { possible, began, changed, ended, cancelled, failed };

State state(const PlatformObject& recognizer) {
    const auto number = recognizer.integer(Message::state).value_or(0);
    return number >= 0 && number <= 5 ? static_cast<State>(number) : State::possible;
}

Attributes gesture(std::string action, std::string label) {
    Attributes attributes;
    attributes.set(LogAttribute::evtAction, std::move(action));
    attributes.set(LogAttribute::evtLabel, std::move(label));
    return attributes;
}

std::string directionText(std::int64_t direction) {
    switch (direction) {
    case 1: return "Right";
    case 2: return "Left";
    case 4: return "Up";
    case 8: return "Down";
    default: return "Unknown " + std::to_string(static_cast<std::uint64_t>(direction)); // a mask, without a sign
    }
}

bool isCell(const PlatformObject& view) { return view.isKindOf("UITableViewCell"); }

std::string offeredText(const PlatformObject& view) {
    const TextContainerSubviews container(view);
    return isCell(view) ? container.cellText() : container.text();
}

bool isAlertView(const PlatformObject& view) {
    static constexpr std::array<std::string_view, 2> names{"UIActionSheetiOSDismissActionView",
                                                           "_UIAlertControllerInterfaceActionGroupView"};
    const auto name = view.className();
    return name == names[0] || name == names[1];
}

// The table that the view is or lies in, nil where there is none.
PlatformObject tableAround(PlatformObject view) {
    for (int height = 0; view && height < TextContainerSubviews::mostDepth; ++height) {
        if (view.isKindOf("UITableView")) return view;
        view = view.object(Message::superview);
    }
    return {view.platform(), {}};
}

std::string touchedCellText(const PlatformObject& recognizer, const PlatformObject& view) {
    const auto table = tableAround(view);
    const auto point = table ? recognizer.point(Message::locationInView, table.reference()) : std::nullopt;
    if (!point) return {};
    const auto indexPath = table.object(Message::indexPathForRowAtPoint, *point);
    if (!indexPath) return {};
    const auto cell = table.object(Message::cellForRowAtIndexPath, indexPath.reference());
    return cell ? TextContainerSubviews(cell).cellText() : std::string();
}

} // namespace

Attributes GestureAttributes::tap(const PlatformObject& recognizer) {
    auto label = recognizer.customName();
    if (label.empty()) label = offeredText(recognizer.object(Message::view));
    return gesture("Tap Gesture", std::move(label));
}

Attributes GestureAttributes::swipe(const PlatformObject& recognizer) {
    return gesture("Swipe Gesture " + directionText(recognizer.integer(Message::direction).value_or(0)),
                   recognizer.customName());
}

Attributes GestureAttributes::pinch(const PlatformObject& recognizer) {
    return gesture("Pinch Gesture", recognizer.customName());
}

Attributes GestureAttributes::longPress(const PlatformObject& recognizer) {
    const auto reached = state(recognizer);
    if (reached == State::possible || reached == State::changed) return {};
    const auto view = recognizer.object(Message::view);
    const bool isAlert = isAlertView(view);
    auto label = recognizer.customName();
    if (label.empty()) label = isAlert ? TextContainerSubviews(view).text() : touchedCellText(recognizer, view);
    auto attributes = gesture("Long Press Gesture", std::move(label));
    if (isAlert) attributes.set(LogAttribute::evtType, rawValue(EventType::alert));
    return attributes;
}

Attributes GestureAttributes::pan(const PlatformObject& recognizer) {
    if (state(recognizer) != State::ended) return {};
    const auto view = recognizer.object(Message::view);
    auto label = recognizer.customName();
    if (label.empty()) label = offeredText(view);
    return gesture(isCell(view) ? "Cell Swipe" : "Pan Gesture", std::move(label));
}

} // namespace tallyfoot
