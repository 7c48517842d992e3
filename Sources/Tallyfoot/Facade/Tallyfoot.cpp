#include "Tallyfoot/Facade/Tallyfoot.h"

#include "Tallyfoot/Facade/Configuration/Settings.h"
#include "Tallyfoot/Facade/EventPipeline.h"
#include "Tallyfoot/Facade/TallyfootImplementation.h"
#include "Tallyfoot/Platform/CancellationHold.h"
#include "Tallyfoot/Platform/FatalError.h"
#include "Tallyfoot/Platform/Screen.h"

#include <cerrno>
#include <utility>

namespace tallyfoot {

namespace {

// What a call leaves of its thread as it was. A host may log a failure before it looks at the failure's number.
struct KeptThread {
    const int errorNumber = errno;
    const CancellationHold hold;
    KeptThread() = default;
    ~KeptThread() { errno = errorNumber; }
    KeptThread(const KeptThread&) = delete;
    KeptThread& operator=(const KeptThread&) = delete;
};

// No exception reaches a host: what memory runs out for is dropped.
template <class Block>
void guarded(Block&& block) noexcept {
    const KeptThread kept;
    try {
        std::forward<Block>(block)();
    } catch (...) { // NOLINT(bugprone-empty-catch): there is nobody to tell
    }
}

template <class Value, class Block>
Value guardedValue(Block&& block) noexcept {
    const KeptThread kept;
    try {
        return std::forward<Block>(block)();
    } catch (...) {
        return Value();
    }
}

Tallyfoot::Implementation& implementation() noexcept { return Tallyfoot::Implementation::shared(); }

} // namespace

Tallyfoot::Tallyfoot() : implementation_(std::make_unique<Implementation>()) {}

Tallyfoot::~Tallyfoot() = default;

Tallyfoot& Tallyfoot::shared() noexcept {
    // Never released: a host may log while its process ends. A process without memory for this one
    // object has none for anything.
    static auto* const instance = [] {
        const KeptThread kept;
        return new Tallyfoot(); // NOLINT(bugprone-unhandled-exception-at-new)
    }();
    return *instance;
}

Tallyfoot::Implementation& Tallyfoot::Implementation::shared() noexcept { return *Tallyfoot::shared().implementation_; }

// --- Switching on ----------------------------------------------------------------------------

void Tallyfoot::configure(std::shared_ptr<UploadConfiguration> configuration,
                          const std::vector<std::string>& ignoreClasses,
                          AuthenticationClosure authenticationClosure) noexcept {
    guarded(
        [&] { implementation().configure(std::move(configuration), ignoreClasses, std::move(authenticationClosure)); });
}

std::shared_ptr<ApplicationInfo> Tallyfoot::appInfo() noexcept { return implementation().pipeline.context()->appInfo; }

void Tallyfoot::setAppInfo(std::shared_ptr<ApplicationInfo> appInfo) noexcept {
    guarded([&] { implementation().setAppInfo(std::move(appInfo)); });
}

CategoryTitles Tallyfoot::categoryCustomTitles() noexcept {
    return guardedValue<CategoryTitles>([] { return implementation().categoryCustomTitles.copy(); });
}

void Tallyfoot::categoryCustomTitles(const std::map<std::string, std::string>& titles) noexcept {
    guarded([&] {
        CategoryTitles known;
        for (const auto& [name, title] : titles)
            if (const auto itfClass = fromRawValue<ITFClass>(name)) known[*itfClass] = title;
        implementation().categoryCustomTitles.exchange(std::move(known));
    });
}

void Tallyfoot::configureSwizzle() noexcept {
    guarded([] { implementation().installInterceptionsOnce(); });
}

// --- Logging ---------------------------------------------------------------------------------

void Tallyfoot::log(EventType type, Attributes attributes, const CustomAttributes& customAttributes) noexcept {
    guarded([&] { implementation().pipeline.log(type, attributes, customAttributes.text()); });
}

void Tallyfoot::log(std::string_view type, Attributes attributes, const CustomAttributes& customAttributes) noexcept {
    guarded([&] {
        attributes.set(LogAttribute::evtType, type);
        implementation().pipeline.log(EventType::action, attributes, customAttributes.text());
    });
}

void Tallyfoot::logJSON(EventType type, Attributes attributes,
                        std::optional<std::string_view> customJSONAttributes) noexcept {
    guarded([&] { implementation().pipeline.log(type, attributes, customJSONAttributes); });
}

void Tallyfoot::logJSON(std::string_view type, Attributes attributes,
                        std::optional<std::string_view> customJSONAttributes) noexcept {
    guarded([&] {
        attributes.set(LogAttribute::evtType, type);
        implementation().pipeline.log(EventType::action, attributes, customJSONAttributes);
    });
}

void Tallyfoot::logEvent(EventType type, const TextAttributes& attributes,
                         const CustomAttributes& customAttributes) noexcept {
    guarded([&] { log(type, Attributes::fromTexts(attributes), customAttributes); });
}

void Tallyfoot::logEvent(std::string_view type, const TextAttributes& attributes,
                         const CustomAttributes& customAttributes) noexcept {
    guarded([&] { log(type, Attributes::fromTexts(attributes), customAttributes); });
}

void Tallyfoot::logJSONEvent(EventType type, const TextAttributes& attributes,
                             std::optional<std::string_view> customJSONAttributes) noexcept {
    guarded([&] { logJSON(type, Attributes::fromTexts(attributes), customJSONAttributes); });
}

void Tallyfoot::logJSONEvent(std::string_view type, const TextAttributes& attributes,
                             std::optional<std::string_view> customJSONAttributes) noexcept {
    guarded([&] { logJSON(type, Attributes::fromTexts(attributes), customJSONAttributes); });
}

// --- Settings --------------------------------------------------------------------------------

bool Tallyfoot::isEnabled() noexcept { return processSettings().isEnabled; }

void Tallyfoot::setIsEnabled(bool isEnabled) noexcept { processSettings().isEnabled = isEnabled; }

bool Tallyfoot::showOutput() noexcept { return processSettings().showOutput; }

void Tallyfoot::setShowOutput(bool showOutput) noexcept { processSettings().showOutput = showOutput; }

bool Tallyfoot::consoleOutput() noexcept { return showOutput(); }

void Tallyfoot::setConsoleOutput(bool consoleOutput) noexcept { setShowOutput(consoleOutput); }

bool Tallyfoot::isSwizzled() noexcept { return implementation().isSwizzled; }

void Tallyfoot::setIsSwizzled(bool isSwizzled) noexcept { implementation().isSwizzled = isSwizzled; }

bool Tallyfoot::ignoreFileSizeThreshold() noexcept { return processSettings().ignoreFileSizeThreshold; }

void Tallyfoot::setIgnoreFileSizeThreshold(bool ignore) noexcept { processSettings().ignoreFileSizeThreshold = ignore; }

std::optional<std::string> Tallyfoot::pageParent() noexcept {
    return guardedValue<std::optional<std::string>>([] { return implementation().pipeline.context()->pageParent; });
}

void Tallyfoot::setPageParent(std::optional<std::string> pageParent) noexcept {
    guarded([&] {
        implementation().pipeline.changeContext(
            [&](EventPipeline::Context& context) { context.pageParent = std::move(pageParent); });
    });
}

std::shared_ptr<Environment> Tallyfoot::environment() noexcept {
    return guardedValue<std::shared_ptr<Environment>>([] { return processSettings().environment(); });
}

void Tallyfoot::setEnvironment(std::shared_ptr<Environment> environment) noexcept {
    guarded([&] {
        processSettings().setEnvironment(std::move(environment));
        implementation().installInterceptionsOnce();
    });
}

void Tallyfoot::modifyEnvironment(const std::function<void(Environment&)>& change) noexcept {
    guarded([&] {
        if (change) change(*processSettings().environment());
    });
    configureSwizzle();
}

void Tallyfoot::setScreenSize(double width, double height) noexcept {
    guarded([&] { defaultPlatformServices().screen->setBounds({width, height}); });
}

// --- The shared instance ---------------------------------------------------------------------

std::string Tallyfoot::authenticationToken() const noexcept {
    const auto recorder = implementation_->pipeline.context()->recorder;
    if (!recorder) fatalError("authenticationToken needs configure and appInfo first");
    const auto authentication = recorder->authenticationInfo();
    if (!authentication) fatalError("authenticationToken needs an authentication");
    return guardedValue<std::string>([&] { return authentication->authenticationToken(); });
}

std::set<std::string> Tallyfoot::ignoreClasses() const noexcept {
    return guardedValue<std::set<std::string>>([this] {
        const auto context = implementation_->pipeline.context();
        return std::set<std::string>(context->ignoreClasses.begin(), context->ignoreClasses.end());
    });
}

std::shared_ptr<UploadConfiguration> Tallyfoot::uploadConfiguration() const noexcept {
    return guardedValue<std::shared_ptr<UploadConfiguration>>([] {
        const auto configured = processSettings().uploadConfiguration.copy();
        return configured ? configured : UploadConfiguration::defaultConfiguration();
    });
}

std::vector<std::string> Tallyfoot::logs() const noexcept { return {}; }

} // namespace tallyfoot
