#pragma once

#include "Tallyfoot/Crash/CrashContext.h"
#include "Tallyfoot/Events/Attributes.h"
#include "Tallyfoot/Events/Device.h"
#include "Tallyfoot/Events/EventType.h"
#include "Tallyfoot/Events/GeneratedAttributes.h"
#include "Tallyfoot/Facade/Configuration/ApplicationInfo.h"
#include "Tallyfoot/Facade/Configuration/Settings.h"
#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Recording/EventRecorder.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace tallyfoot {

// The way of one event from a logging call to the recorder, on the caller's thread: ignored
// categories drop out, the generated attributes come in, the console shows it, it is rendered and
// recorded. Any thread.
class EventPipeline {
public:
    // What a logging call reads. Replaced as a whole, so that each call sees one consistent set.
    struct Context {
        std::set<std::string, std::less<>> ignoreClasses; // categories
        std::optional<std::string> pageParent;
        std::shared_ptr<ApplicationInfo> appInfo; // for the console
        std::shared_ptr<EventRecorder> recorder;
        std::string currentScreenTitle; // "" where no screen is shown
    };

    // The crash context hears of every thread that logs, and of what events carry from here on.
    EventPipeline(const PlatformServices& services, const Settings& settings, CrashContext& crashContext);

    // Custom data comes as JSON text; what does not begin with "[" becomes an array of one. Adds to the
    // attributes, in their place: they are large, and a move touches each of them.
    void log(EventType type, Attributes& attributes, std::optional<std::string_view> customText);

    std::shared_ptr<const Context> context() const { return context_.copy(); }

    void changeContext(FunctionRef<void(Context&)> change);

    void setCurrentScreenTitle(std::string_view title);

private:
    static bool isIgnored(const Attributes& attributes, const Context& context);
    void print(const Attributes& attributes, const ApplicationInfo& appInfo) const;

    const Device device_;
    const Settings& settings_;
    const DebugConsole console_;
    const GeneratedAttributes generated_;
    CrashContext& crashContext_;
    Exclusive<std::shared_ptr<const Context>> context_;
};

} // namespace tallyfoot
