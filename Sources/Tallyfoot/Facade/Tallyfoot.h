#pragma once

#include "Tallyfoot/Capture/ITFClass.h"
#include "Tallyfoot/Events/Attributes.h"
#include "Tallyfoot/Events/CustomAttributes.h"
#include "Tallyfoot/Events/EventType.h"
#include "Tallyfoot/Export.h"
#include "Tallyfoot/Facade/Configuration/ApplicationInfo.h"
#include "Tallyfoot/Facade/Configuration/Authentication.h"
#include "Tallyfoot/Facade/Configuration/Environment.h"
#include "Tallyfoot/Facade/Configuration/UploadConfiguration.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot {

// The one class through which a host switches the library on, sets it up and logs events of its
// own: `setAppInfo` and `configure`, then `log`. Every call may come from any thread, also while the
// process ends; none throws (making its arguments may, when memory runs out), and each leaves errno as
// it was. A thread that is cancelled (pthread_cancel) goes on until its call has returned. Not for a child
// process forked afterwards: a thread that the child does not have may hold a lock.
class TALLYFOOT_EXPORT Tallyfoot {
public:
    // Asked for the user's credentials when recording starts and whenever the server rejects the
    // token. Runs on the thread that needs them, with nothing of the library's held, so that it may
    // take its time, log and configure. Kept until another one is configured. Returning nothing is
    // fatal. If it throws at the start, the next `configure` or `setAppInfo` tries again; later, the
    // former credentials stay.
    using AuthenticationClosure = std::function<std::shared_ptr<Authentication>()>;

    // --- Switching on -------------------------------------------------------------------------

    // Together with setAppInfo, in either order, starts the recording; events logged before both
    // are lost. Fatal where the user has no folder for application data. `ignoreClasses` are platform
    // class names ("UISlider"), unknown ones are dropped; events of their categories, by the custom
    // titles of this moment, are not recorded. May be called again: closure, configuration and ignored
    // classes are replaced, but a recording that runs keeps the configuration that it started with.
    // Without a configuration the default one is used; without a closure the former one stays.
    // Each call also takes over uncaught exceptions and the signals SIGABRT, SIGILL, SIGSEGV, SIGFPE, SIGBUS
    // and SIGPIPE, whatever the host had installed for them, and then logs the crash of the run before: set
    // the application first, or that event has nowhere to go. Documentation/Crash.md tells what it means.
    static void configure(std::shared_ptr<UploadConfiguration> configuration,
                          const std::vector<std::string>& ignoreClasses,
                          AuthenticationClosure authenticationClosure) noexcept;

    // Another appName switches the recording to that application; its logs go to a folder of their own,
    // and what the former ones left is uploaded. The same appName again changes nothing on disk.
    // Without one (nullptr) events are not shown; a recording that runs goes on.
    static std::shared_ptr<ApplicationInfo> appInfo() noexcept;
    static void setAppInfo(std::shared_ptr<ApplicationInfo> appInfo) noexcept;

    // Categories of the host's own, by platform class name; unknown names are dropped. Replaces the former ones.
    static CategoryTitles categoryCustomTitles() noexcept;
    static void categoryCustomTitles(const std::map<std::string, std::string>& titles) noexcept;

    // Installs automatic capture, unless isSwizzled; `configure` and `setEnvironment` do so too.
    static void configureSwizzle() noexcept;

    // --- Logging ------------------------------------------------------------------------------
    // An event is on disk when its call returns. What is dropped is dropped silently: events of an
    // ignored category, without any attribute or custom data, or before the recording has started.
    // Custom data that cannot be serialised is left out and its event kept. A type given as a text is
    // written as it is; a number that is no EventType is fatal. No type or JSON text may be a null
    // pointer. What a call sets itself wins over what every event gets: "evtLclTimestamp", "evtId",
    // "pgName" (the current screen), "pgPrnt" and "evtType".

    static void log(EventType type, Attributes attributes,
                    const CustomAttributes& customAttributes = std::nullopt) noexcept;
    static void log(std::string_view type, Attributes attributes,
                    const CustomAttributes& customAttributes = std::nullopt) noexcept;

    // Custom data as JSON text; one that does not begin with "[" becomes an array of one.
    static void logJSON(EventType type, Attributes attributes,
                        std::optional<std::string_view> customJSONAttributes = std::nullopt) noexcept;
    static void logJSON(std::string_view type, Attributes attributes,
                        std::optional<std::string_view> customJSONAttributes = std::nullopt) noexcept;

    // Attributes by record key; unknown keys are dropped.
    static void logEvent(EventType type, const TextAttributes& attributes,
                         const CustomAttributes& customAttributes = std::nullopt) noexcept;
    static void logEvent(std::string_view type, const TextAttributes& attributes,
                         const CustomAttributes& customAttributes = std::nullopt) noexcept;
    static void logJSONEvent(EventType type, const TextAttributes& attributes,
                             std::optional<std::string_view> customJSONAttributes = std::nullopt) noexcept;
    static void logJSONEvent(std::string_view type, const TextAttributes& attributes,
                             std::optional<std::string_view> customJSONAttributes = std::nullopt) noexcept;

    // --- Settings -----------------------------------------------------------------------------

    static bool isEnabled() noexcept; // off: events are shown, not written
    static void setIsEnabled(bool isEnabled) noexcept;
    static bool showOutput() noexcept; // the console output, on by default; consoleOutput is its second name
    static void setShowOutput(bool showOutput) noexcept;
    static bool consoleOutput() noexcept;
    static void setConsoleOutput(bool consoleOutput) noexcept;
    static bool isSwizzled() noexcept; // whether automatic capture has been installed
    static void setIsSwizzled(bool isSwizzled) noexcept;
    static bool ignoreFileSizeThreshold() noexcept; // on: every event triggers an upload; for testing the upload path
    static void setIgnoreFileSizeThreshold(bool ignore) noexcept;
    static std::optional<std::string> pageParent() noexcept; // every later event's "pgPrnt"; "iOS" when none
    static void setPageParent(std::optional<std::string> pageParent) noexcept;

    static std::shared_ptr<Environment> environment() noexcept; // a default one is made where there is none
    static void setEnvironment(std::shared_ptr<Environment> environment) noexcept;
    // Changes the environment in place, with the same consequences as setting it.
    static void modifyEnvironment(const std::function<void(Environment&)>& change) noexcept;

    // The size that "deviceScrnDim" reports, in points, where the platform knows none. One that is not
    // finite or beyond 64 bits is fatal when it is reported.
    static void setScreenSize(double width, double height) noexcept;

    // --- The shared instance ------------------------------------------------------------------

    static Tallyfoot& shared() noexcept;

    // The token of the credentials in use. Fatal before the recording has started.
    std::string authenticationToken() const noexcept;
    std::set<std::string> ignoreClasses() const noexcept; // the categories whose events are dropped
    std::shared_ptr<UploadConfiguration> uploadConfiguration() const noexcept;
    std::vector<std::string> logs() const noexcept; // kept empty: events are on disk, not here

    Tallyfoot(const Tallyfoot&) = delete;
    Tallyfoot& operator=(const Tallyfoot&) = delete;

    struct TALLYFOOT_INTERNAL Implementation; // the library's own

private:
    Tallyfoot();
    ~Tallyfoot();
    std::unique_ptr<Implementation> implementation_;
};

} // namespace tallyfoot
