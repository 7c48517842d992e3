#include "Tallyfoot/Events/DateDescription.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace tallyfoot {

namespace {

// The text of one second. Without a destructor, so that an event logged while its thread ends still finds it.
struct KeptText {
    std::int64_t second = std::numeric_limits<std::int64_t>::min();
    DateDescription description{std::chrono::sys_seconds{}};
};

char* writeTwoDigits(char* at, unsigned number) {
    *at++ = static_cast<char>('0' + number / 10);
    *at++ = static_cast<char>('0' + number % 10);
    return at;
}

char* writeYear(char* at, int year) {
    if (year < 0) *at++ = '-';
    const unsigned magnitude = static_cast<unsigned>(year < 0 ? -year : year);
    for (unsigned limit = 1000; limit > 1 && magnitude < limit; limit /= 10) *at++ = '0';
    return std::to_chars(at, at + 8, magnitude).ptr;
}

} // namespace

DateDescription::DateDescription(std::chrono::sys_seconds second) noexcept {
    const auto day = std::chrono::floor<std::chrono::days>(second);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(second - day);
    char* at = writeYear(bytes_.data(), static_cast<int>(date.year()));
    *at++ = '-';
    at = writeTwoDigits(at, static_cast<unsigned>(date.month()));
    *at++ = '-';
    at = writeTwoDigits(at, static_cast<unsigned>(date.day()));
    *at++ = ' ';
    at = writeTwoDigits(at, static_cast<unsigned>(time.hours().count()));
    *at++ = ':';
    at = writeTwoDigits(at, static_cast<unsigned>(time.minutes().count()));
    *at++ = ':';
    at = writeTwoDigits(at, static_cast<unsigned>(time.seconds().count()));
    for (const char byte : std::string_view(" +0000")) *at++ = byte;
    size_ = static_cast<std::size_t>(at - bytes_.data());
}

std::string_view dateDescription(std::chrono::sys_seconds second) {
    thread_local KeptText kept;
    const auto number = second.time_since_epoch().count();
    if (number != kept.second) kept = {number, DateDescription(second)};
    return kept.description.text();
}

std::string dateDescription(double secondsSince1970) {
    constexpr double most = 9e11; // some 28,500 years
    const double second = std::floor(secondsSince1970);
    if (!(second > -most && second < most)) return {}; // nor is it a number
    const std::chrono::seconds whole(static_cast<std::int64_t>(second));
    return std::string(DateDescription(std::chrono::sys_seconds(whole)).text());
}

} // namespace tallyfoot
