#include "Tallyfoot/Events/Device.h"

#include "Tallyfoot/Platform/Bundle.h"
#include "Tallyfoot/Platform/FatalError.h"
#include "Tallyfoot/Platform/NetworkInterfaces.h"
#include "Tallyfoot/Platform/Screen.h"

#include <cstdint>

namespace tallyfoot {

namespace {

std::string truncated(double points) {
    // Both bounds are doubles; what lies between them truncates to a number that fits. NaN does not lie between.
    if (!(points >= -0x1p63 && points < 0x1p63)) fatalError("a screen's size that is no whole number");
    return std::to_string(static_cast<std::int64_t>(points));
}

} // namespace

Attributes Device::attributes() const {
    Attributes attributes;
    attributes.set(LogAttribute::appName, applicationName());
    attributes.set(LogAttribute::userAgent, details_.userAgent());
    attributes.set(LogAttribute::deviceScrnDim, screenDimensions());
    attributes.set(LogAttribute::userIpAddress, ipAddress().value_or(""));
    return attributes;
}

std::string Device::applicationName() const {
    return services_.bundles->mainBundle().information("CFBundleName").value_or("");
}

std::string Device::screenDimensions() const {
    const auto bounds = services_.screen->bounds();
    return truncated(bounds.width) + "-" + truncated(bounds.height);
}

std::optional<std::string> Device::ipAddress() const {
    std::optional<std::string> last;
    for (auto& address : services_.networkInterfaces->addresses())
        if (address.name == "en0" && address.family != AddressFamily::other) last = std::move(address.numericHost);
    return last;
}

} // namespace tallyfoot
