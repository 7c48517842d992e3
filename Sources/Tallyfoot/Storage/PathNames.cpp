#include "Tallyfoot/Storage/PathNames.h"

#include <array>
#include <cstdint>

namespace tallyfoot {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t longestName = 255; // bytes, on every file system in question
constexpr auto mark = "%-"sv;

template <class Keeps>
std::string percentEncoded(std::string_view text, Keeps keeps) {
    constexpr auto digits = "0123456789ABCDEF"sv;
    std::string encoded;
    encoded.reserve(text.size());
    for (const char character : text) {
        if (keeps(character)) {
            encoded += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            encoded += {'%', digits[byte >> 4U], digits[byte & 0xFU]};
        }
    }
    return encoded;
}

std::uint64_t fnv1a(std::string_view text, std::uint64_t hash) noexcept {
    for (const char character : text) {
        hash ^= static_cast<unsigned char>(character);
        hash *= 0x100000001B3U;
    }
    return hash;
}

std::string hexadecimal(std::uint64_t value) {
    constexpr auto digits = "0123456789abcdef"sv;
    std::string text(16, '0');
    for (auto place = text.rbegin(); place != text.rend(); ++place, value >>= 4U) *place = digits[value & 0xFU];
    return text;
}

// "%#" cannot come out of the encoding, so a cut name never equals a whole one.
std::string shortened(std::string_view encoded, std::string_view text) {
    constexpr std::size_t kept = 160;
    std::size_t end = kept;
    while (end > 0 && (static_cast<unsigned char>(encoded[end]) & 0xC0U) == 0x80U) --end; // whole characters
    std::string name(encoded.substr(0, end));
    name += "%#" + std::to_string(text.size()) + "-" + hexadecimal(fnv1a(text, 0xCBF29CE484222325U))
            + hexadecimal(fnv1a(text, 0x9E3779B97F4A7C15U));
    return name;
}

} // namespace

std::string pathComponent(std::string_view text) {
    const bool leadsElsewhere = text.empty() || text == "." || text == ".." || text.find('/') != text.npos
                                || text.find('\0') != text.npos || text.size() > longestName;
    if (!leadsElsewhere && !text.starts_with(mark)) return std::string(text);
    std::string name(mark);
    name +=
        percentEncoded(text, [](char character) { return character != '/' && character != '\0' && character != '%'; });
    return name.size() > longestName ? shortened(name, text) : name;
}

bool isPlainFileName(std::string_view name) noexcept {
    return !name.empty() && name.front() != '.' && name.find_first_of("/\\\0"sv) == name.npos;
}

std::string_view lastPathComponent(std::string_view path) noexcept {
    const auto slash = path.rfind('/');
    return slash == path.npos ? path : path.substr(slash + 1);
}

std::string fileURL(std::string_view path) {
    return "file://" + percentEncoded(path, [](char character) {
               return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z')
                      || (character >= '0' && character <= '9')
                      || "!$&'()*+,-./:=@_~"sv.find(character) != std::string_view::npos;
           });
}

} // namespace tallyfoot
