#include "Tallyfoot/Facade/EventPipeline.h"

#include "Tallyfoot/Events/FileEventFormatter.h"
#include "Tallyfoot/Events/StoredRecord.h"
#include "Tallyfoot/Events/Text.h"
#include "Tallyfoot/Facade/LineBuffer.h"
#include "Tallyfoot/Platform/Console.h"

#include <utility>

namespace tallyfoot {

namespace {

bool beginsWithBracket(std::string_view text) {
    if (text.empty() || text.front() != '[') return false;
    // A combining mark behind the bracket would make the two one character.
    const bool isAlone = text.size() == 1 || static_cast<unsigned char>(text[1]) < 0x80;
    return isAlone || text::character(text, 0) == "[";
}

std::string asArray(std::string_view text) {
    if (beginsWithBracket(text)) return std::string(text);
    std::string array;
    array.reserve(text.size() + 2);
    return array.append("[").append(text).append("]");
}

} // namespace

EventPipeline::EventPipeline(const PlatformServices& services, const Settings& settings, CrashContext& crashContext)
    : device_(services), settings_(settings), console_(*services.console, settings.showOutput),
      generated_(*services.clock, *services.random), crashContext_(crashContext),
      context_(std::make_shared<const Context>()) {}

void EventPipeline::changeContext(FunctionRef<void(Context&)> change) {
    std::shared_ptr<const Context> former; // released after the lock
    context_.modify([&](std::shared_ptr<const Context>& context) {
        auto changed = std::make_shared<Context>(*context);
        change(*changed);
        crashContext_.setPageParent(changed->pageParent);
        crashContext_.setScreenTitle(changed->currentScreenTitle);
        former = std::exchange(context, std::move(changed));
    });
}

bool EventPipeline::isIgnored(const Attributes& attributes, const Context& context) {
    const auto* category = attributes.find(LogAttribute::evtCategory);
    return category != nullptr && context.ignoreClasses.contains(*category);
}

void EventPipeline::setCurrentScreenTitle(std::string_view title) {
    changeContext([&](Context& context) { context.currentScreenTitle = title; });
}

void EventPipeline::log(EventType type, Attributes& attributes, std::optional<std::string_view> customText) {
    crashContext_.prepareThread();
    const auto context = this->context();
    if (isIgnored(attributes, *context)) return;
    if (customText) attributes.set(LogAttribute::custom, asArray(*customText));
    if (attributes.empty()) return;

    generated_.addTo(attributes, context->currentScreenTitle, context->pageParent);
    if (!attributes.contains(LogAttribute::evtType)) attributes.set(LogAttribute::evtType, rawValue(type));

    if (context->appInfo && console_.isOn()) print(attributes, *context->appInfo);
    if (!settings_.isEnabled.load(std::memory_order_relaxed) || !context->recorder) return;

    LineBuffer line;
    if (!FileEventFormatter().format(attributes, *line)) return;
    makeStoredRecord(*line, attributes);
    context->recorder->record(*line);
}

void EventPipeline::print(const Attributes& attributes, const ApplicationInfo& appInfo) const {
    const auto banner = debugDescription("**************************************************") + "\n";
    auto shown = device_.attributes();
    shown += attributes;
    shown.set(LogAttribute::appName, appInfo.appName());

    std::string block = banner;
    shown.forEach([&](LogAttribute key, const std::string& value) {
        block += debugDescription(std::string(rawValue(key)) + ": " + value) + "\n";
    });
    block += banner;
    console_.printBlock(text::utf8String(block)); // as it is stored
}

} // namespace tallyfoot
