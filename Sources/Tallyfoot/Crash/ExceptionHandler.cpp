#include "Tallyfoot/Crash/ExceptionHandler.h"

#include "Tallyfoot/Events/DateDescription.h"
#include "Tallyfoot/Events/LogAttribute.h"
#include "Tallyfoot/Platform/Clock.h"
#include "Tallyfoot/Platform/CrashHooks.h"
#include "Tallyfoot/Platform/Random.h"
#include "Tallyfoot/Platform/UserDefaults.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>

namespace tallyfoot {

namespace {

constexpr std::string_view crash = "crash"; // the key in the user defaults, and the event's category

struct FatalSignal {
    int number;
    std::string_view name;
};

constexpr std::array<FatalSignal, 6> fatalSignals{{{SIGABRT, "SIGABRT"},
                                                   {SIGILL, "SIGILL"},
                                                   {SIGSEGV, "SIGSEGV"},
                                                   {SIGFPE, "SIGFPE"},
                                                   {SIGBUS, "SIGBUS"},
                                                   {SIGPIPE, "SIGPIPE"}}};

constexpr std::string_view nameOf(int number) noexcept {
    for (const auto& signal : fatalSignals)
        if (signal.number == number) return signal.name;
    return {};
}

constinit std::atomic<ExceptionHandler*> installed{nullptr};

// Nothing where the value is anything else than a dictionary from text to text.
std::optional<Attributes> attributesIn(const PropertyList& value) {
    const auto* dictionary = value.as<PropertyList::Dictionary>();
    if (dictionary == nullptr) return std::nullopt;
    Attributes attributes;
    for (const auto& [key, entry] : *dictionary) {
        const auto* text = entry.as<std::string>();
        if (text == nullptr) return std::nullopt;
        if (const auto attribute = fromRawValue<LogAttribute>(key)) attributes.set(*attribute, *text);
    }
    return attributes;
}

// ["crashreason": "SIGSEGV", "evtCategory": "crash"]
std::string description(const Attributes& attributes) {
    std::string text;
    attributes.forEach([&](LogAttribute key, const std::string& value) {
        text += text.empty() ? "[" : ", ";
        text += debugDescription(rawValue(key)) + ": " + debugDescription(value);
    });
    return text + "]";
}

} // namespace

ExceptionHandler::ExceptionHandler(const PlatformServices& services, CrashContext& context, CrashFacade& facade)
    : services_(services), context_(context), facade_(facade) {}

ExceptionHandler::~ExceptionHandler() {
    auto* self = this;
    installed.compare_exchange_strong(self, nullptr);
}

void ExceptionHandler::install() {
    prepare();
    installHooks();
    // Of two threads that configure at once, one tells.
    if (isReporting_.exchange(true)) return;
    try {
        reportStoredCrash();
    } catch (...) { // memory ran out: the record stays for the next time
    }
    isReporting_.store(false);
}

// Everything that the hooks need.
void ExceptionHandler::prepare() {
    context_.prepareThread();
    if (isPreparing_.exchange(true)) return;
    try {
        identifier_.set(services_.random->uuidString());
        if (!storage_) storage_ = services_.userDefaults->makeSignalSafeStore(crash);
        store_.store(storage_.get());
    } catch (...) { // what there was before still serves
    }
    isPreparing_.store(false);
}

void ExceptionHandler::installHooks() {
    installed.store(this);
    services_.crashHooks->setUncaughtExceptionHandler(onException);
    for (const auto& signal : fatalSignals) services_.crashHooks->signal(signal.number, onSignal);
}

// --- The hooks: async-signal-safe up to the end of `save` ---------------------------------------

void ExceptionHandler::onException(std::string_view reason) noexcept {
    if (auto* handler = installed.load()) handler->save(reason);
}

void ExceptionHandler::onSignal(int number) noexcept {
    auto* handler = installed.load();
    if (handler == nullptr) std::_Exit(number);
    handler->save(nameOf(number));
    handler->services_.crashHooks->exit(number);
}

void ExceptionHandler::save(std::string_view reason) noexcept {
    isSaving_.store(true);
    // A record that is being removed just now must not take the new one with it.
    for (int pauses = 0; pauses < 1000; ++pauses) {
        const auto clearing = clearing_.load();
        if (clearing == std::thread::id() || clearing == std::this_thread::get_id()) break;
        services_.crashHooks->pause();
    }
    const DateDescription time(services_.clock->now());
    const std::array<SignalSafeStore::Text, 5> texts{{{rawValue(LogAttribute::crashReason), reason},
                                                      {rawValue(LogAttribute::evtId), identifier_.readForever()},
                                                      {rawValue(LogAttribute::evtLclTimestamp), time.text()},
                                                      {rawValue(LogAttribute::screenTitle), context_.screenTitle()},
                                                      {rawValue(LogAttribute::window), context_.pageParent()}}};
    if (auto* store = store_.load()) (void)store->store(texts);
}

// --- The next start -----------------------------------------------------------------------------

void ExceptionHandler::reportStoredCrash() {
    const auto value = services_.userDefaults->object(crash);
    auto attributes = value ? attributesIn(*value) : std::nullopt;
    if (!attributes || attributes->empty()) return;
    attributes->set(LogAttribute::evtCategory, crash);
    const auto told = facade_.console().isOn() ? description(*attributes) : std::string();
    if (!facade_.isIgnored(crash)) facade_.log(EventType::crash, *attributes);
    facade_.console().print({"Adding crash: ", told});
    clear(*value);
}

void ExceptionHandler::clear(const PropertyList& told) {
    // Another process of the application may have crashed meanwhile.
    if (services_.userDefaults->object(crash) != told) return;
    clearing_.store(std::this_thread::get_id());
    if (!isSaving_.load()) {
        services_.userDefaults->remove(crash);
        (void)services_.userDefaults->synchronize();
    }
    clearing_.store({});
}

} // namespace tallyfoot
