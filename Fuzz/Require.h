#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace tallyfoot::fuzzing {

// Ends the run, and with it keeps the input, when a promise is broken.
inline void require(bool holds, const char* promise) {
    if (holds) return;
    std::fprintf(stderr, "Broken: %s\n", promise);
    std::abort();
}

inline std::string_view text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

} // namespace tallyfoot::fuzzing
