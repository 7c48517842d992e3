#pragma once

#include "Tallyfoot/Platform/CrashHooks.h"
#include "Tallyfoot/Platform/SignalSafeText.h"

#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

// What a crash will be told with, kept up to date while the process is well. Any thread.
class CrashContext {
public:
    explicit CrashContext(CrashHooks& hooks) : hooks_(hooks) {}

    // Whoever logs or configures: its crash is heard even if its stack is used up. Cheap.
    void prepareThread() noexcept { hooks_.prepareThread(); }

    void setPageParent(const std::optional<std::string>& pageParent) {
        pageParent_.set(pageParent ? std::string_view(*pageParent) : std::string_view("iOS"));
    }

    void setScreenTitle(std::string_view title) { screenTitle_.set(title); }

    // For a process that ends; async-signal-safe.
    std::string_view pageParent() noexcept { return pageParent_.readForever(); }
    std::string_view screenTitle() noexcept { return screenTitle_.readForever(); }

private:
    CrashHooks& hooks_;
    SignalSafeText pageParent_{"iOS"};
    SignalSafeText screenTitle_;
};

} // namespace tallyfoot
