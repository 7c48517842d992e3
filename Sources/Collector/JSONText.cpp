#include "Collector/JSONText.h"

#include <nlohmann/json.hpp>

namespace tallyfoot::collector {

namespace {

// Calls `token` for every byte that belongs to a token, and tells it whether it stands in a string.
template <class Token>
void forEachTokenByte(std::string_view json, Token token) {
    bool inString = false;
    bool escaped = false;
    for (const char byte : json) {
        if (inString) {
            token(byte, true);
            if (escaped) {
                escaped = false;
            } else if (byte == '\\') {
                escaped = true;
            } else if (byte == '"') {
                inString = false;
            }
        } else if (byte != ' ' && byte != '\n' && byte != '\r' && byte != '\t') {
            inString = byte == '"';
            token(byte, inString);
        }
    }
}

} // namespace

std::string compacted(std::string_view json) {
    std::string text;
    text.reserve(json.size());
    forEachTokenByte(json, [&](char byte, bool) { text += byte; });
    return text;
}

std::string prettyPrinted(std::string_view compactObject) {
    std::string text;
    text.reserve(compactObject.size() + compactObject.size() / 8);
    forEachTokenByte(compactObject, [&](char byte, bool inString) {
        if (!inString && (byte == '{' || byte == ',')) {
            text += byte;
            text += "\n  ";
        } else if (!inString && byte == ':') {
            text += " : ";
        } else if (!inString && byte == '}') {
            text += "\n}";
        } else {
            text += byte;
        }
    });
    return text;
}

std::string jsonText(const nlohmann::ordered_json& value) {
    return value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::string jsonString(std::string_view text) { return jsonText(text); }

bool isUTF8(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size()) {
        const auto first = static_cast<unsigned char>(text[i]);
        if (first < 0x80) {
            ++i;
            continue;
        }
        const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
        if (first < 0xC2 || first > 0xF4 || i + length > text.size()) return false;
        const auto second = static_cast<unsigned char>(text[i + 1]);
        const unsigned char lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
        const unsigned char highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
        if (second < lowest || second > highest) return false;
        for (std::size_t k = 2; k < length; ++k) {
            if ((static_cast<unsigned char>(text[i + k]) & 0xC0U) != 0x80U) return false;
        }
        i += length;
    }
    return true;
}

} // namespace tallyfoot::collector
