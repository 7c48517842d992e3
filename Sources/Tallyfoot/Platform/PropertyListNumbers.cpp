#include "Tallyfoot/Platform/PropertyListNumbers.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>
#include <type_traits>

namespace tallyfoot {

namespace {

using Integers = std::numeric_limits<std::int64_t>;

bool isDigit(char character) { return character >= '0' && character <= '9'; }

bool isNegative(std::string_view number) { return number.starts_with('-'); }

// From the sign on, which is left out where it is a plus.
std::string_view numberOf(std::string_view text) {
    const auto start = text.find_first_not_of(" \t\n\v\f\r");
    if (start == text.npos) return {};
    text.remove_prefix(start);
    if (text.starts_with('+')) text.remove_prefix(text.size() > 1 && text[1] == '-' ? text.size() : 1);
    return text;
}

std::int64_t integerOfText(std::string_view text) {
    const auto number = numberOf(text);
    std::int64_t value = 0;
    const auto read = std::from_chars(number.data(), number.data() + number.size(), value);
    if (read.ec == std::errc::result_out_of_range) return isNegative(number) ? Integers::min() : Integers::max();
    return value;
}

// Of a number that no double holds: whether it is too large, and not too small.
bool isHuge(std::string_view number) {
    const auto exponentAt = number.find_first_of("eE");
    if (exponentAt == number.npos) return number.find_first_of("123456789") < number.find('.');
    return number.substr(exponentAt + 1, 1) != "-";
}

double realOfText(std::string_view text) {
    const auto number = numberOf(text);
    const auto digits = isNegative(number) ? number.substr(1) : number;
    if (digits.empty() || (!isDigit(digits.front()) && digits.front() != '.')) return 0; // "inf" is no number here
    double value = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (read.ec == std::errc::result_out_of_range)
        value = isHuge(digits.substr(0, static_cast<std::size_t>(read.ptr - digits.data())))
                    ? std::numeric_limits<double>::infinity()
                    : 0;
    return isNegative(number) ? -value : value;
}

std::int64_t integerOfReal(double value) {
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (std::isnan(value)) return 0;
    if (value >= limit) return Integers::max();
    if (value < -limit) return Integers::min();
    return static_cast<std::int64_t>(value);
}

} // namespace

std::int64_t integerValue(const PropertyList& list) {
    if (const auto* integer = list.as<std::int64_t>()) return *integer;
    if (const auto* real = list.as<double>()) return integerOfReal(*real);
    if (const auto* boolean = list.as<bool>()) return *boolean ? 1 : 0;
    if (const auto* text = list.as<std::string>()) return integerOfText(*text);
    return 0;
}

double realValue(const PropertyList& list) {
    if (const auto* integer = list.as<std::int64_t>()) return static_cast<double>(*integer);
    if (const auto* real = list.as<double>()) return *real;
    if (const auto* boolean = list.as<bool>()) return *boolean ? 1 : 0;
    if (const auto* text = list.as<std::string>()) return realOfText(*text);
    return 0;
}

} // namespace tallyfoot
