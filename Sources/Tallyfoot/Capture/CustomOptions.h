#pragma once

#include "Tallyfoot/Capture/ObjectiveCRuntime.h"

#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

// Attached to views, controllers, bar items and recognizers by the host. A value of another type reads
// as the default. On the thread that touches the object.
class CustomOptions {
public:
    explicit CustomOptions(ObjectiveCRuntime& runtime) : runtime_(runtime) {}

    std::string customName(ObjectRef object) const; // "" when never set
    void setCustomName(ObjectRef object, std::optional<std::string_view> name) const;
    bool logEnabled(ObjectRef object) const; // true when never set
    void setLogEnabled(ObjectRef object, bool isEnabled) const;

    static const void* customNameKey() noexcept;
    static const void* logEnabledKey() noexcept;

private:
    ObjectiveCRuntime& runtime_;
};

} // namespace tallyfoot
