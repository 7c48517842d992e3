#pragma once

#include "Tallyfoot/Platform/Console.h"

namespace tallyfoot {

// Writes to a descriptor, standard output unless told otherwise. All consoles of the process take
// turns. A descriptor that would block is given a quarter of a second; what it has not taken by then is
// lost, and so is what it does not take at once from then on. What it takes again starts on a line of
// its own. Neither a reader that went away nor a file at the limit of the process raises a signal.
class PosixConsole final : public Console {
public:
    PosixConsole() : PosixConsole(1) {}

    explicit PosixConsole(int descriptor) : descriptor_(descriptor) {}

    void write(std::string_view text) noexcept override;

private:
    int descriptor_;
};

} // namespace tallyfoot
