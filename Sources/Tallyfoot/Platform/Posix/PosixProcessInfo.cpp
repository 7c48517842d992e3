#include "Tallyfoot/Platform/Posix/PosixProcessInfo.h"

#include <sys/utsname.h>

#include <array>
#include <charconv>
#include <cstdlib>

namespace tallyfoot {

std::optional<std::string> PosixProcessInfo::environment(const std::string& name) const {
    const char* value = std::getenv(name.c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

OperatingSystemVersion PosixProcessInfo::operatingSystemVersion() const {
    utsname facts{};
    return ::uname(&facts) == 0 ? tallyfoot::operatingSystemVersion(facts.release) : OperatingSystemVersion{0, 0, 0};
}

std::string PosixProcessInfo::machine() const {
    utsname facts{};
    return ::uname(&facts) == 0 ? facts.machine : "";
}

OperatingSystemVersion operatingSystemVersion(std::string_view release) {
    std::array<long, 3> numbers{};
    const char* at = release.data();
    const char* const end = at + release.size();
    for (auto& number : numbers) {
        const auto parsed = std::from_chars(at, end, number);
        if (parsed.ec != std::errc() || number < 0) {
            number = 0;
            break;
        }
        if (parsed.ptr == end || *parsed.ptr != '.') break;
        at = parsed.ptr + 1;
    }
    return {numbers[0], numbers[1], numbers[2]};
}

} // namespace tallyfoot
