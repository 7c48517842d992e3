#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace tallyfoot::commandline {

// Shows how a session goes: one line that changes on a terminal, a line a step elsewhere.
class DemoProgress {
public:
    struct Counts {
        std::int64_t logged = 0;
        std::int64_t written = 0;   // on disk at the moment
        std::int64_t packed = 0;    // of these, in archives
        std::int64_t sent = 0;      // records that arrived, however often
        std::int64_t confirmed = 0; // different events that were accepted
    };

    DemoProgress();
    void step(const std::string& text); // what happens from now on
    void show(const Counts& counts);
    void endStep();

private:
    std::string line() const;

    bool isTerminal_;
    bool isLineShown_ = false;
    Counts counts_;
};

} // namespace tallyfoot::commandline
