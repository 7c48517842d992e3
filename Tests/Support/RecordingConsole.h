#pragma once

#include "Tallyfoot/Platform/Console.h"
#include "Tallyfoot/Platform/Exclusive.h"

#include <string>
#include <vector>

namespace tallyfoot::testing {

// Keeps what was written to it.
class RecordingConsole final : public Console {
public:
    void write(std::string_view text) noexcept override {
        text_.modify([&](std::string& all) { all += text; });
    }
    std::string text() const { return text_.copy(); }
    std::vector<std::string> lines() const;     // without their line feeds
    bool contains(std::string_view line) const; // as a whole line
    void clear() { text_.exchange({}); }

private:
    Exclusive<std::string> text_;
};

} // namespace tallyfoot::testing
