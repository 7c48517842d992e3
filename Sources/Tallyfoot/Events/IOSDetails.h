#pragma once

#include "Tallyfoot/Platform/PlatformServices.h"

#include <map>
#include <string>
#include <string_view>

namespace tallyfoot {

// Who runs this: the user agent "machine/iOS/version/short version/build version", empty parts kept.
class IOSDetails {
public:
    explicit IOSDetails(const PlatformServices& services) : services_(services) {}

    std::string machineIdentifier() const; // SIMULATOR_MODEL_IDENTIFIER, else uname's machine
    std::string osVersion() const;         // "17.0.0"
    std::string userAgent() const;

    // Model names by machine identifier, built on first use. The user agent carries the raw identifier.
    static const std::map<std::string_view, std::string_view>& iphoneFamily();
    static const std::map<std::string_view, std::string_view>& ipadFamily();

private:
    PlatformServices services_;
};

} // namespace tallyfoot
