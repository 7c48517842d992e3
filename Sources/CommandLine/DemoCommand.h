#pragma once

#include "CommandLine/DemoSession.h"

#include <CLI/App.hpp>

#include <filesystem>

namespace tallyfoot::commandline {

// tallyfoot demo: plays a session against a local collector and settles the accounts. Fails when a
// single event is unaccounted for.
class DemoCommand {
public:
    DemoCommand(CLI::App& app, int& status); // both must outlive it

private:
    int run() const;
    DemoOptions chosenOptions(const std::filesystem::path& tool) const;
    int settle(DemoSession& session, bool wasPlayed) const;

    DemoOptions options_;
    bool isQuick_ = false;
    bool keepsFolder_ = false;
    bool isPlain_ = false;
};

} // namespace tallyfoot::commandline
