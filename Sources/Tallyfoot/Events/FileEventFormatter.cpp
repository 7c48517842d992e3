#include "Tallyfoot/Events/FileEventFormatter.h"

#include "Tallyfoot/Events/JSONText.h"

#include <array>
#include <cstring>
#include <exception>
#include <string_view>

namespace tallyfoot {

namespace {

// What stands between two values: the end of one member and the beginning of the next.
struct Joint {
    std::array<char, 40> bytes{};
    std::size_t size = 0;

    constexpr void append(std::string_view text) {
        for (const char byte : text) bytes[size++] = byte;
    }

    constexpr std::string_view text() const { return {bytes.data(), size}; }
};

constexpr std::string_view endOfValue = "\",";

constexpr auto joints = [] {
    std::array<Joint, logAttributeTexts.size()> all{};
    for (std::size_t place = 0; place < all.size(); ++place) {
        all[place].append(endOfValue);
        all[place].append("\n  \"");
        all[place].append(logAttributeTexts[place]);
        all[place].append("\" : \"");
    }
    return all;
}();

constexpr bool isPlainKey(std::string_view key) {
    for (const char byte : key)
        if ((byte < 'a' || byte > 'z') && (byte < 'A' || byte > 'Z')) return false;
    return true;
}

static_assert(
    [] {
        for (const auto key : logAttributeTexts)
            if (!isPlainKey(key)) return false;
        return true;
    }(),
    "keys go out without escaping");

const Joint& jointBefore(LogAttribute key) { return joints[static_cast<std::size_t>(key)]; }

// Nearly every event needs no escaping, so that its length is known beforehand. False for the others.
bool renderPlain(const Attributes& properties, std::string& into) {
    std::size_t size = sizeof(Joint::bytes); // they are copied whole, and their ends written over
    properties.forEach([&](LogAttribute key, const std::string& text) { size += jointBefore(key).size + text.size(); });
    into.resize(size);
    char* at = into.data();
    properties.forEach([&](LogAttribute key, const std::string& text) {
        if (at == nullptr) return;
        const auto& joint = jointBefore(key);
        std::memcpy(at, joint.bytes.data(), joint.bytes.size());
        at = json::copyPlain(at + joint.size, text);
    });
    if (at == nullptr) return false;
    into.resize(static_cast<std::size_t>(at - into.data()));
    into.replace(0, endOfValue.size(), "{");
    into += "\"\n}";
    return true;
}

void render(const Attributes& properties, std::string& into) {
    if (properties.empty()) {
        into = "{\n\n}";
        return;
    }
    if (renderPlain(properties, into)) return;
    into.clear();
    properties.forEach([&](LogAttribute key, const std::string& text) {
        const auto joint = jointBefore(key).text();
        if (into.empty()) {
            into += '{';
            into += joint.substr(endOfValue.size());
        } else {
            into += joint;
        }
        json::appendEscaped(into, text);
    });
    into += "\"\n}";
}

} // namespace

bool FileEventFormatter::format(const Attributes& properties, std::string& into) const {
    try {
        render(properties, into);
        return true;
    } catch (const std::exception&) { // no memory for so long a text
        into.clear();
        return false;
    }
}

std::optional<std::string> FileEventFormatter::format(const Event& event) const {
    std::optional<std::string> text(std::in_place);
    if (!format(event.properties, *text)) text.reset();
    return text;
}

} // namespace tallyfoot
