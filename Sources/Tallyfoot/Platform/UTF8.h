#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

// Well-formedness of UTF-8, a sequence at a time. No state; any thread.
namespace tallyfoot::utf8 {

inline constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD"; // U+FFFD

// What stands at one place: a well-formed sequence, or as many bytes as become one U+FFFD, which is
// the longest beginning of a well-formed sequence, and at least one byte.
struct Sequence {
    std::uint8_t length;
    bool isWellFormed;
};

inline Sequence sequence(const unsigned char* at, const unsigned char* end) noexcept {
    const unsigned lead = *at;
    if (lead < 0x80) return {1, true};
    // Of the trailing bytes only the second one's range depends on the lead.
    unsigned lowest = 0x80;
    unsigned highest = 0xBF;
    std::uint8_t whole = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        whole = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        whole = 3;
        if (lead == 0xE0) lowest = 0xA0;  // shorter forms exist
        if (lead == 0xED) highest = 0x9F; // surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        whole = 4;
        if (lead == 0xF0) lowest = 0x90;
        if (lead == 0xF4) highest = 0x8F; // beyond U+10FFFF
    }
    if (whole == 0) return {1, false};
    std::uint8_t length = 1;
    for (++at; length < whole; ++length, ++at) {
        if (at == end || *at < lowest || *at > highest) return {length, false};
        lowest = 0x80;
        highest = 0xBF;
    }
    return {length, true};
}

// The code point of a well-formed sequence.
inline std::uint32_t codePoint(const unsigned char* at, Sequence sequence) noexcept {
    if (sequence.length == 1) return *at;
    std::uint32_t value = *at & (0x7FU >> sequence.length);
    for (std::uint8_t place = 1; place < sequence.length; ++place) value = (value << 6) | (at[place] & 0x3FU);
    return value;
}

inline void append(std::string& into, std::uint32_t codePoint) {
    const auto byte = [&](std::uint32_t bits) { into += static_cast<char>(static_cast<unsigned char>(bits)); };
    if (codePoint < 0x80) return byte(codePoint);
    if (codePoint < 0x800) {
        byte(0xC0 | (codePoint >> 6));
    } else {
        if (codePoint < 0x10000) {
            byte(0xE0 | (codePoint >> 12));
        } else {
            byte(0xF0 | (codePoint >> 18));
            byte(0x80 | ((codePoint >> 12) & 0x3F));
        }
        byte(0x80 | ((codePoint >> 6) & 0x3F));
    }
    byte(0x80 | (codePoint & 0x3F));
}

inline std::uint64_t eightBytes(const unsigned char* at) noexcept {
    std::uint64_t bytes;
    std::memcpy(&bytes, at, sizeof bytes);
    return bytes;
}

inline constexpr std::uint64_t everyByte(unsigned value) noexcept { return 0x0101010101010101U * value; }

// The first byte that is not ASCII, or the end.
inline const unsigned char* skipASCII(const unsigned char* at, const unsigned char* end) noexcept {
    while (end - at >= 8 && (eightBytes(at) & everyByte(0x80)) == 0) at += 8;
    while (at != end && *at < 0x80) ++at;
    return at;
}

inline const unsigned char* begin(std::string_view text) noexcept {
    return reinterpret_cast<const unsigned char*>(text.data());
}

inline const unsigned char* end(std::string_view text) noexcept { return begin(text) + text.size(); }

// The text with U+FFFD in the place of what is ill-formed.
inline std::string wellFormed(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    const auto* at = begin(bytes);
    const auto* const last = end(bytes);
    while (at != last) {
        const auto* const plain = skipASCII(at, last);
        text.append(reinterpret_cast<const char*>(at), static_cast<std::size_t>(plain - at));
        for (at = plain; at != last && *at >= 0x80;) {
            const auto next = sequence(at, last);
            if (next.isWellFormed)
                text.append(reinterpret_cast<const char*>(at), next.length);
            else
                text += replacementCharacter;
            at += next.length;
        }
    }
    return text;
}

} // namespace tallyfoot::utf8
