#pragma once

#include "Tallyfoot/Capture/CaptureFacade.h"
#include "Tallyfoot/Capture/PlatformObject.h"
#include "Tallyfoot/Platform/Clock.h"
#include "Tallyfoot/Platform/Exclusive.h"

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

namespace tallyfoot {

// A screen is a view controller between its will-appear and its will-disappear. When it goes, it becomes
// an event that tells how long it was shown. The current one is that which appeared last of those still
// shown; its title is the one it had when it appeared. Any thread.
class ScreenTracking {
public:
    explicit ScreenTracking(CaptureFacade& facade) : facade_(facade) {}

    void willAppear(const PlatformObject& controller);
    void willDisappear(const PlatformObject& controller);

private:
    struct Screen {
        Date start;
        std::uint64_t appearance = 0; // its number among all appearances
        std::string title;
    };

    struct Screens {
        std::unordered_map<std::string, Screen> active; // by the controller's objectIdentifier
        std::uint64_t appearances = 0;
    };

    static bool isTrackedScreen(const PlatformObject& controller);
    std::optional<double> takeElapsed(const std::string& identifier);
    void printSize(std::size_t size) const;

    CaptureFacade& facade_;
    Exclusive<Screens> screens_;
};

} // namespace tallyfoot
