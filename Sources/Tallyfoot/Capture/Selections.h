#pragma once

#include "Tallyfoot/Capture/CaptureFacade.h"
#include "Tallyfoot/Capture/MethodBody.h"
#include "Tallyfoot/Capture/PlatformObject.h"

namespace tallyfoot {

// What the user chose in a table, a collection, a tab bar or a search bar, and where a scroll ended, as
// the platform tells their delegates.
class Selections {
public:
    explicit Selections(CaptureFacade& facade) : facade_(facade) {}

    // The sender is what the delegate was told about, the item what was chosen in it.
    void record(MethodBody callback, const PlatformObject& sender, const PlatformObject& item) const;

private:
    void recordRow(const PlatformObject& table, const PlatformObject& indexPath) const;
    void recordItem(const PlatformObject& collection, const PlatformObject& indexPath) const;
    void recordTab(const PlatformObject& tabBar, const PlatformObject& item) const;
    void recordSearchBar(const PlatformObject& searchBar, const char* action) const;
    void recordSearchUpdate(const PlatformObject& controller) const;
    void recordScroll(const PlatformObject& scrollView) const;

    struct Account {
        EventType type;
        ITFClass itfClass;
        const char* action;
    };

    bool isIgnored(ITFClass itfClass) const { return facade_.isIgnored(facade_.category(itfClass)); }

    void log(const Account& account, std::optional<std::string> label) const;

    CaptureFacade& facade_;
};

} // namespace tallyfoot
