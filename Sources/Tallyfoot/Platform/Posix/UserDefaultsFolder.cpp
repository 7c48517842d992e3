#include "Tallyfoot/Platform/Posix/UserDefaultsFolder.h"

#include "Tallyfoot/Platform/Posix/HomeFolder.h"

#include <array>
#include <cstdint>
#include <cstdio>

namespace tallyfoot {

namespace {

constexpr std::size_t maximumNameLength = 200; // of the 255 that file systems allow
constexpr std::string_view hexadecimal = "0123456789ABCDEF";

bool standsForItself(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') || byte == '.'
           || byte == '_';
}

std::string escaped(std::string_view path) {
    std::string name;
    for (const char byte : path) {
        if (byte == '/') {
            name += '-';
        } else if (standsForItself(byte)) {
            name += byte;
        } else {
            const auto value = static_cast<unsigned char>(byte);
            name += {'%', hexadecimal[value >> 4U], hexadecimal[value & 0xFU]};
        }
    }
    return name;
}

// FNV-1a in 128 bits, kept in two words: the prime is 2^88 + 0x13B.
std::string hash(std::string_view bytes) {
    std::uint64_t high = 0x6c62272e07bb0142;
    std::uint64_t low = 0x62b821756295c58d;
    constexpr std::uint64_t prime = 0x13B;
    for (const char byte : bytes) {
        low ^= static_cast<unsigned char>(byte);
        const std::uint64_t lower = (low & 0xFFFFFFFF) * prime;
        const std::uint64_t upper = (low >> 32U) * prime + (lower >> 32U);
        high = high * prime + (upper >> 32U) + (low << 24U);
        low = upper << 32U | (lower & 0xFFFFFFFF);
    }
    std::array<char, 33> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx%016llx", static_cast<unsigned long long>(high),
                  static_cast<unsigned long long>(low));
    return digits.data();
}

std::optional<std::string> configurationHome() {
    if (auto given = pathVariable("XDG_CONFIG_HOME")) return given;
    const auto home = homeFolder();
    return home ? std::optional(*home + "/.config") : std::nullopt;
}

} // namespace

std::optional<std::string> userDefaultsFolder(std::string_view applicationPath) {
    const auto home = configurationHome();
    return home ? std::optional(*home + "/Tallyfoot/" + bundleFolderName(applicationPath)) : std::nullopt;
}

std::string bundleFolderName(std::string_view applicationPath) {
    auto name = escaped(applicationPath);
    if (name.size() <= maximumNameLength) return name;
    const auto head = "~" + hash(applicationPath) + "~";
    return head + name.substr(name.size() - (maximumNameLength - head.size()));
}

} // namespace tallyfoot
