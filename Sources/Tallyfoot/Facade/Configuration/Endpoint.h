#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tallyfoot {

// The server that uploads go to. The numbers are what Objective-C callers pass.
enum class Endpoint { dev = 0, uat = 1, prod = 2 };

inline constexpr std::array<std::string_view, 3> endpointKeys{"dev", "uat", "prod"}; // in "uploadBases"
constexpr std::string_view uploadBaseKey(Endpoint endpoint) noexcept {
    return endpointKeys[static_cast<std::size_t>(endpoint)];
}

template <class Enumeration>
constexpr std::optional<Enumeration> fromRawValue(std::int64_t number) noexcept;
template <>
constexpr std::optional<Endpoint> fromRawValue<Endpoint>(std::int64_t number) noexcept {
    if (number < 0 || number > 2) return std::nullopt;
    return static_cast<Endpoint>(number);
}

} // namespace tallyfoot
