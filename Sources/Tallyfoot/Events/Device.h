#pragma once

#include "Tallyfoot/Events/Attributes.h"
#include "Tallyfoot/Events/IOSDetails.h"
#include "Tallyfoot/Platform/PlatformServices.h"

#include <optional>
#include <string>

namespace tallyfoot {

// Facts about the device and the application. Bundle facts are read once, the rest is asked afresh
// each time. Any thread.
class Device {
public:
    explicit Device(const PlatformServices& services) : services_(services), details_(services) {}

    Attributes attributes() const; // appName, userAgent, deviceScrnDim, userIpAddress

    std::string applicationName() const;          // "CFBundleName", or empty
    std::string screenDimensions() const;         // "390-844": truncated; fatal if not a finite number that fits
    std::optional<std::string> ipAddress() const; // of "en0"; the last one listed

private:
    PlatformServices services_;
    IOSDetails details_;
};

} // namespace tallyfoot
