#include "Tallyfoot/Events/JSONText.h"

#include "Tallyfoot/Platform/UTF8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace tallyfoot::json {

namespace {

// The bytes that a string shows as they are: ASCII without controls, '"', '/' and '\'.
constexpr auto plainBytes = [] {
    std::array<bool, 256> plain{};
    for (unsigned byte = 0x20; byte < 0x80; ++byte) plain[byte] = byte != '"' && byte != '/' && byte != '\\';
    return plain;
}();

// Sixteen bytes in one register, by the vector extension that g++ and clang++ share.
using Block = signed char __attribute__((vector_size(16)));

bool hasOnlyPlainBytes(const unsigned char* at) noexcept {
    Block block;
    std::memcpy(&block, at, sizeof block);
    // Signed: what is not ASCII is less than a space, too.
    const Block other = (block < 0x20) | (block == '"') | (block == '/') | (block == '\\');
    std::array<std::uint64_t, 2> halves;
    std::memcpy(halves.data(), &other, sizeof other);
    return (halves[0] | halves[1]) == 0;
}

void append(std::string& into, const unsigned char* from, const unsigned char* to) {
    into.append(reinterpret_cast<const char*>(from), static_cast<std::size_t>(to - from));
}

void appendEscape(std::string& into, unsigned char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    switch (byte) {
    case '"': into += "\\\""; break;
    case '/': into += "\\/"; break;
    case '\\': into += "\\\\"; break;
    case '\b': into += "\\b"; break;
    case '\f': into += "\\f"; break;
    case '\n': into += "\\n"; break;
    case '\r': into += "\\r"; break;
    case '\t': into += "\\t"; break;
    default:
        into += "\\u00";
        into += digits[byte >> 4];
        into += digits[byte & 0xF];
    }
}

template <class Number>
void appendNumber(std::string& into, Number number) {
    std::array<char, 24> digits;
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    into.append(digits.data(), end);
}

// Whether a number that no double holds is too small for one rather than too large: the place of
// its first digit that counts, moved by the exponent.
bool isBelowOne(std::string_view text) {
    const auto mark = std::min(text.find_first_of("eE"), text.size());
    const auto digits = text.substr(0, mark);
    const auto first = digits.find_first_of("123456789");
    if (first == std::string_view::npos) return true;
    const auto point = std::min(digits.find('.'), digits.size());
    const auto place = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);

    std::string_view exponent = text.substr(std::min(mark + 1, text.size()));
    if (exponent.starts_with('+')) exponent.remove_prefix(1);
    std::int64_t power = 0;
    if (std::from_chars(exponent.data(), exponent.data() + exponent.size(), power).ec == std::errc::result_out_of_range)
        return exponent.starts_with('-');
    return power < -place;
}

} // namespace

const unsigned char* skipPlainBytes(const unsigned char* at, const unsigned char* end) noexcept {
    constexpr std::ptrdiff_t blockSize = sizeof(Block);
    if (end - at >= blockSize) {
        while (end - at >= blockSize && hasOnlyPlainBytes(at)) at += blockSize;
        // The rest is looked at once more with what stands before it, rather than byte by byte.
        if (end - at < blockSize && hasOnlyPlainBytes(end - blockSize)) return end;
    }
    while (at != end && plainBytes[*at]) ++at;
    return at;
}

char* copyPlain(char* to, std::string_view text) noexcept {
    constexpr std::size_t blockSize = sizeof(Block);
    char* const copyEnd = to + text.size();
    const unsigned char* at = utf8::begin(text);
    const unsigned char* const end = utf8::end(text);
    if (text.size() < blockSize) {
        for (; at != end; ++at, ++to) {
            if (!plainBytes[*at]) return nullptr;
            *to = static_cast<char>(*at);
        }
        return copyEnd;
    }
    for (; static_cast<std::size_t>(end - at) > blockSize; at += blockSize, to += blockSize) {
        if (!hasOnlyPlainBytes(at)) return nullptr;
        std::memcpy(to, at, blockSize);
    }
    if (!hasOnlyPlainBytes(end - blockSize)) return nullptr;
    std::memcpy(copyEnd - blockSize, end - blockSize, blockSize);
    return copyEnd;
}

bool appendEscaped(std::string& into, std::string_view text) {
    const unsigned char* at = utf8::begin(text);
    const unsigned char* const end = utf8::end(text);
    const unsigned char* run = at; // what stands between here and `at` goes out as it is
    bool wellFormed = true;
    while ((at = skipPlainBytes(at, end)) != end) {
        if (*at < 0x80) {
            append(into, run, at);
            appendEscape(into, *at);
            run = ++at;
            continue;
        }
        const auto sequence = utf8::sequence(at, end);
        if (!sequence.isWellFormed) {
            append(into, run, at);
            into += utf8::replacementCharacter;
            run = at + sequence.length;
            wellFormed = false;
        }
        at += sequence.length;
    }
    append(into, run, end);
    return wellFormed;
}

bool appendQuoted(std::string& into, std::string_view text) {
    into += '"';
    const bool wellFormed = appendEscaped(into, text);
    into += '"';
    return wellFormed;
}

void appendInteger(std::string& into, std::int64_t number) { appendNumber(into, number); }

void appendUnsigned(std::string& into, std::uint64_t number) { appendNumber(into, number); }

bool appendReal(std::string& into, double number) {
    if (!std::isfinite(number)) return false;
    // Digits alone up to where a double stops telling whole numbers apart, an exponent beyond.
    const double magnitude = std::fabs(number);
    const bool plain = magnitude == 0 || (magnitude >= 1e-4 && magnitude <= 0x1p54);
    std::array<char, 40> digits;
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                            plain ? std::chars_format::fixed : std::chars_format::scientific);
    into.append(digits.data(), end);
    return true;
}

std::optional<double> realNumber(std::string_view text) {
    double number = 0;
    const auto error = std::from_chars(text.data(), text.data() + text.size(), number).ec;
    if (error == std::errc::result_out_of_range) {
        if (!isBelowOne(text)) return std::nullopt;
        return text.starts_with('-') ? -0.0 : 0.0;
    }
    if (error != std::errc() || !std::isfinite(number)) return std::nullopt;
    return number;
}

} // namespace tallyfoot::json
