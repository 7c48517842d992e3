#pragma once

#include "Tallyfoot/Facade/Configuration/ApplicationInfo.h"
#include "Tallyfoot/Platform/KeyedArchiver.h"
#include "Tallyfoot/Platform/UserDefaults.h"

#include <memory>
#include <string_view>
#include <vector>

namespace tallyfoot {

// The application identities that have logged on this device, kept in the user-defaults store as
// keyed archives. A stored value that is no such archive counts as none. Callers hold the recorder's turn.
class KnownApplications {
public:
    KnownApplications(UserDefaults& userDefaults, const KeyedArchiver& archiver)
        : userDefaults_(userDefaults), archiver_(archiver) {}

    std::vector<std::shared_ptr<const ApplicationInfo>> list() const; // unique by appName, oldest first

    // Stores it as the current one and in the list: in the place of the entry with its appName, else at the end.
    void setCurrent(const ApplicationInfo& appInfo);
    void remove(std::string_view appName);

private:
    using List = std::vector<std::shared_ptr<const ApplicationInfo>>;
    void store(const List& list);

    UserDefaults& userDefaults_;
    const KeyedArchiver& archiver_;
};

} // namespace tallyfoot
