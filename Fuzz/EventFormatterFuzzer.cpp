// Any values: an event's text is well-formed JSON that reads back as its attributes.
#include "Fuzz/Require.h"

#include "Tallyfoot/Events/FileEventFormatter.h"
#include "Tallyfoot/Events/Text.h"

#include <nlohmann/json.hpp>

using namespace tallyfoot;
using fuzzing::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Two bytes say which attribute and how long its value is.
    Event event{EventType::action, {}};
    for (auto rest = fuzzing::text(data, size); rest.size() >= 2;) {
        const auto key = static_cast<unsigned char>(rest[0]) % logAttributeTexts.size();
        const auto length = static_cast<unsigned char>(rest[1]);
        event.properties.set(static_cast<LogAttribute>(key), rest.substr(2, length));
        rest.remove_prefix(std::min<std::size_t>(rest.size(), 2U + length));
    }
    const auto text = FileEventFormatter().format(event);
    require(text.has_value(), "every event can be formatted");
    require(text::isWellFormed(*text), "an event's text is well-formed UTF-8");
    const auto object = nlohmann::json::parse(*text, nullptr, false);
    require(object.is_object() && object.size() == event.properties.size(), "an event's text is a JSON object");
    event.properties.forEach([&](LogAttribute key, const std::string& value) {
        require(object.value(std::string(rawValue(key)), "") == text::utf8String(value), "a value reads back");
    });
    return 0;
}
