#include "Tallyfoot/Platform/DebugConsole.h"

namespace tallyfoot {

namespace {

void appendEscaped(std::string& into, std::string_view piece) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (const char character : piece) {
        const auto byte = static_cast<unsigned char>(character);
        switch (character) {
        case '\\': into += "\\\\"; break;
        case '"': into += "\\\""; break;
        case '\'': into += "\\'"; break;
        case '\n': into += "\\n"; break;
        case '\r': into += "\\r"; break;
        case '\t': into += "\\t"; break;
        case '\0': into += "\\0"; break;
        default:
            if (byte < 0x20 || byte == 0x7F) {
                into += "\\u{";
                into += digits[byte >> 4U];
                into += digits[byte & 0xFU];
                into += '}';
            } else {
                into += character;
            }
        }
    }
}

} // namespace

std::string debugDescription(std::string_view text) {
    std::string description;
    description.reserve(text.size() + 2);
    description += '"';
    appendEscaped(description, text);
    description += '"';
    return description;
}

void DebugConsole::print(std::initializer_list<std::string_view> pieces) const {
    if (!isOn()) return;
    std::string line = "\"";
    for (const auto piece : pieces) appendEscaped(line, piece);
    line += "\"\n";
    console_.write(line);
}

void DebugConsole::printBlock(std::string_view block) const {
    if (isOn()) console_.write(block);
}

} // namespace tallyfoot
