#include "Tallyfoot/Capture/NumberText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace tallyfoot {

namespace {

// Longest with two decimals: 309 digits before the point.
using Digits = std::array<char, 340>;

template <class Number>
std::string shortest(Number number) {
    if (!std::isfinite(number)) return std::isnan(number) ? "nan" : number < 0 ? "-inf" : "inf";
    // Beyond that many, neighbouring whole numbers are no longer told apart.
    constexpr auto mostWhole = static_cast<Number>(1ULL << std::numeric_limits<Number>::digits);
    const auto magnitude = std::fabs(number);
    const bool isPlain = magnitude == 0 || (magnitude >= static_cast<Number>(0.0001L) && magnitude <= mostWhole);
    Digits digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                   isPlain ? std::chars_format::fixed : std::chars_format::scientific)
                         .ptr;
    std::string text(digits.data(), end);
    if (isPlain && text.find('.') == std::string::npos) text += ".0";
    return text;
}

} // namespace

std::string shortestText(double number) { return shortest(number); }

std::string shortestText(float number) { return shortest(number); }

std::string twoDecimals(double number) {
    Digits digits;
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed, 2).ptr;
    return {digits.data(), end};
}

} // namespace tallyfoot
