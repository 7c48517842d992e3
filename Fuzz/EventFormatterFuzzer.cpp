// Any values: an event's text is, to the byte, what another writer's escaping and the layout make of
// its attributes, and its record what turning the custom data in that text makes of it.
#include "Fuzz/Require.h"

#include "Tallyfoot/Events/FileEventFormatter.h"
#include "Tallyfoot/Events/JSON.h"
#include "Tallyfoot/Events/StoredRecord.h"
#include "Tallyfoot/Events/Text.h"

#include <nlohmann/json.hpp>

using namespace tallyfoot;
using fuzzing::require;

namespace {

std::string quoted(const std::string& value) {
    std::string text;
    for (const char byte : nlohmann::json(text::utf8String(value)).dump()) {
        if (byte == '/') text += '\\';
        text += byte;
    }
    return text;
}

std::string expected(const Attributes& properties) {
    std::string members;
    properties.forEach([&](LogAttribute key, const std::string& value) {
        if (!members.empty()) members += ",\n";
        members += "  \"" + std::string(rawValue(key)) + "\" : " + quoted(value);
    });
    return "{\n" + members + "\n}";
}

} // namespace

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
    require(*text == expected(event.properties), "an event's text has the stated layout");
    std::string record = *text;
    makeStoredRecord(record, event.properties);
    require(record == json::deEscapedCustomData(*text) + std::string(recordSeparator),
            "a record is the text with its custom data turned, and the separator");
    return 0;
}
