#pragma once

#include "Tallyfoot/Platform/Clock.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace tallyfoot {

// The platform's default description of a date, in UTC, down to the second: "2023-11-14 22:13:20 +0000".
// A plain value that takes no memory and no lock, so that the hook of a fatal signal may make one as well.
class DateDescription {
public:
    explicit DateDescription(std::chrono::sys_seconds second) noexcept;
    explicit DateDescription(Date date) noexcept : DateDescription(std::chrono::floor<std::chrono::seconds>(date)) {}

    std::string_view text() const noexcept { return {bytes_.data(), size_}; }

private:
    std::array<char, 40> bytes_{};
    std::size_t size_ = 0;
};

// The same for who asks often: many events fall into one second. Any thread.
std::string_view dateDescription(std::chrono::sys_seconds second); // valid until the thread asks again
std::string dateDescription(double secondsSince1970);              // "" beyond any year that a calendar counts

} // namespace tallyfoot
