#pragma once

#include "Tallyfoot/Platform/Console.h"

namespace tallyfoot {

// Writes to a descriptor, standard output unless told otherwise. All consoles of the process take
// turns. A descriptor that would block is given a few milliseconds; what it has not taken by then is
// lost, and the next text starts on a line of its own. A reader that went away raises no signal.
class PosixConsole final : public Console {
public:
    PosixConsole() : PosixConsole(1) {}

    explicit PosixConsole(int descriptor) : descriptor_(descriptor) {}

    void write(std::string_view text) noexcept override;

private:
    int descriptor_;
};

} // namespace tallyfoot
