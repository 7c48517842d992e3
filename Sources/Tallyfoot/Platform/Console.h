#pragma once

#include <string_view>

namespace tallyfoot {

// The debug console: standard output where there is no other. Any thread.
class Console {
public:
    virtual ~Console() = default;

    // The text goes out whole, with one write and never mixed with another thread's. The text
    // carries its own line feeds. A console that cannot take it loses it: no failure, no signal.
    virtual void write(std::string_view text) noexcept = 0;
};

} // namespace tallyfoot
