#include "Tallyfoot/Capture/ScreenTracking.h"

#include "Tallyfoot/Capture/IgnoreLists.h"
#include "Tallyfoot/Capture/NumberText.h"

#include <algorithm>
#include <chrono>

namespace tallyfoot {

namespace {

std::string screenTitle(const PlatformObject& controller) {
    if (auto title = controller.text(Message::title)) return std::move(*title);
    return controller.object(Message::navigationItem).text(Message::title).value_or(std::string());
}

} // namespace

bool ScreenTracking::isTrackedScreen(const PlatformObject& controller) {
    return controller.logEnabled() && !IgnoreLists::contains(IgnoreLists::screenControllers, controller.className());
}

void ScreenTracking::willAppear(const PlatformObject& controller) {
    if (!isTrackedScreen(controller)) return;
    const auto now = facade_.clock().now();
    const auto title = screenTitle(controller);
    const auto identifier = controller.objectIdentifier();
    std::size_t started = 0;
    screens_.modify([&](Screens& screens) {
        const auto [place, isNew] = screens.active.try_emplace(identifier, Screen{now, 0, {}});
        place->second.appearance = ++screens.appearances;
        place->second.title = title;
        facade_.setCurrentScreenTitle(title); // in the order of the appearances
        if (isNew) started = screens.active.size();
    });
    if (started > 0) printSize(started);
}

void ScreenTracking::willDisappear(const PlatformObject& controller) {
    const auto elapsed = takeElapsed(controller.objectIdentifier());
    if (!elapsed) return;
    auto category = facade_.category(ITFClass::viewController);
    if (facade_.isIgnored(category)) return;
    auto title = screenTitle(controller);
    auto label = controller.customName();
    if (label.empty()) label = title;

    Attributes attributes;
    attributes.set(LogAttribute::tmspent, twoDecimals(*elapsed));
    attributes.set(LogAttribute::evtCategory, std::move(category));
    attributes.set(LogAttribute::screenTitle, std::move(title));
    attributes.set(LogAttribute::evtLabel, std::move(label));
    facade_.log(EventType::screen, attributes);
}

std::optional<double> ScreenTracking::takeElapsed(const std::string& identifier) {
    const auto now = facade_.clock().now();
    std::optional<double> elapsed;
    std::size_t left = 0;
    screens_.modify([&](Screens& screens) {
        const auto place = screens.active.find(identifier);
        if (place == screens.active.end()) return;
        elapsed = std::chrono::duration<double>(now - place->second.start).count();
        screens.active.erase(place);
        left = screens.active.size();
        const auto last =
            std::max_element(screens.active.begin(), screens.active.end(), [](const auto& one, const auto& other) {
                return one.second.appearance < other.second.appearance;
            });
        facade_.setCurrentScreenTitle(last == screens.active.end() ? std::string_view() : last->second.title);
    });
    if (!elapsed) return std::nullopt;
    printSize(left);
    return elapsed;
}

void ScreenTracking::printSize(std::size_t size) const {
    const auto& console = facade_.console();
    if (console.isOn()) console.printBlock(debugDescription("active screen: ") + "\n" + std::to_string(size) + "\n");
}

} // namespace tallyfoot
