#include "Tallyfoot/Events/DateDescription.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace tallyfoot {

namespace {

using Second = std::chrono::sys_seconds;

// The text of one second, kept because many events fall into it. Without a destructor, so that an
// event logged while its thread ends still finds it.
struct KeptText {
    std::int64_t second = std::numeric_limits<std::int64_t>::min();
    std::size_t size = 0;
    std::array<char, 40> bytes{};
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

void write(KeptText& text, Second second) {
    const auto day = std::chrono::floor<std::chrono::days>(second);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(second - day);
    char* at = writeYear(text.bytes.data(), static_cast<int>(date.year()));
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
    text.size = static_cast<std::size_t>(at - text.bytes.data());
    text.second = second.time_since_epoch().count();
}

} // namespace

std::string_view dateDescription(std::chrono::sys_seconds second) {
    thread_local constinit KeptText kept;
    if (second.time_since_epoch().count() != kept.second) write(kept, second);
    return {kept.bytes.data(), kept.size};
}

std::string dateDescription(double secondsSince1970) {
    constexpr double most = 9e11; // some 28,500 years
    const double second = std::floor(secondsSince1970);
    if (!(second > -most && second < most)) return {}; // nor is it a number
    return std::string(dateDescription(Second(std::chrono::seconds(static_cast<std::int64_t>(second)))));
}

} // namespace tallyfoot
