#pragma once

#include "Tallyfoot/Platform/Console.h"

#include <atomic>
#include <initializer_list>
#include <string>
#include <string_view>

namespace tallyfoot {

// The platform's debug representation of a text: in double quotes, with \\ \" \' \n \r \t \0 and
// every other ASCII control character as \u{1B}.
std::string debugDescription(std::string_view text);

// The library's trace: one item a line, in debug representation, and only while the switch is on.
// With the switch off nothing is formatted. Any thread.
class DebugConsole {
public:
    DebugConsole(Console& console, const std::atomic<bool>& isOn) : console_(console), isOn_(isOn) {}

    bool isOn() const noexcept { return isOn_.load(std::memory_order_relaxed); }

    // The pieces make up one text item, so that nothing is joined while the switch is off.
    void print(std::initializer_list<std::string_view> pieces) const;
    void print(std::string_view text) const { print({text}); }

    // A block that is formatted already and goes out with one write; the caller asks isOn first.
    void printBlock(std::string_view block) const;

    // Goes to standard output whatever the switch says: the structural dumps.
    void dump(std::string_view block) const { console_.write(block); }

private:
    Console& console_;
    const std::atomic<bool>& isOn_;
};

} // namespace tallyfoot
