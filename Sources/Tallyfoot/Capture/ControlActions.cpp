#include "Tallyfoot/Capture/ControlActions.h"

#include "Tallyfoot/Capture/Classification.h"
#include "Tallyfoot/Capture/IgnoreLists.h"
#include "Tallyfoot/Capture/TFEventProtocol.h"

#include <utility>

namespace tallyfoot {

void ControlActions::recordAction(std::string_view action, const PlatformObject& sender) const {
    const auto itfClass = classify(sender);
    if (!itfClass || action.empty()) return;
    const bool isAccessoryButton = itfClass == ITFClass::button && action == "_accessoryButtonAction:";
    if (!isAccessoryButton && itfClass != ITFClass::tableviewSwipeAction) {
        if (!IgnoreLists::contains(IgnoreLists::searchBarActions, action) || itfClass == ITFClass::longPressGesture)
            logInteraction(sender, *itfClass, EventType::action);
        return;
    }
    auto category = facade_.category(*itfClass);
    if (facade_.isIgnored(category) || !sender.logEnabled()) return;
    if (isAccessoryButton)
        recordAccessoryButton(std::move(category));
    else
        recordSwipeAction(sender, std::move(category));
}

void ControlActions::recordAccessoryButton(std::string category) const {
    Attributes attributes;
    attributes.set(LogAttribute::evtAction, "Accessory Button Tap");
    log(EventType::action, attributes, std::move(category));
}

// One that fires without a touch, from the host's code, is nothing that the user did.
void ControlActions::recordSwipeAction(const PlatformObject& sender, std::string category) const {
    if (!sender.isKindOf(rawValue(ITFClass::button))) return;
    auto title = sender.text(Message::currentTitle);
    if (!title || !sender.platform().messages.callStackSymbolsContain(CallStackMarkers::touchUp)) return;
    Attributes attributes;
    attributes.set(LogAttribute::evtLabel, std::move(*title));
    attributes.set(LogAttribute::evtAction, "Cell Swipe Button Tap");
    log(EventType::action, attributes, std::move(category));
}

void ControlActions::logInteraction(const PlatformObject& sender, ITFClass itfClass, EventType defaultType) const {
    const TFEventProtocol account(sender, itfClass);
    if (!account.conforms() || !account.logEnabled()) return;
    auto category = facade_.category(itfClass);
    if (facade_.isIgnored(category)) return; // before its texts are gathered
    auto attributes = account.attributes();
    if (!attributes.empty()) log(defaultType, attributes, std::move(category));
}

void ControlActions::log(EventType defaultType, Attributes& attributes, std::string category) const {
    attributes.set(LogAttribute::evtCategory, std::move(category));
    const auto* named = attributes.find(LogAttribute::evtType);
    const auto type = named ? fromRawValue<EventType>(*named) : std::nullopt;
    facade_.log(type.value_or(defaultType), attributes);
}

} // namespace tallyfoot
