#pragma once

#include "Collector/CollectorServer.h"

#include <CLI/App.hpp>

#include <string>
#include <vector>

namespace tallyfoot::commandline {

// tallyfoot collect: runs the collector until SIGINT or SIGTERM. Once it listens it writes one line of
// JSON to standard output, {"port": …, "url": …}, so that a program that started it can go on.
class CollectCommand {
public:
    CollectCommand(CLI::App& app, int& status); // both must outlive it

private:
    int run();

    collector::CollectorOptions options_;
    std::vector<std::string> faults_;
    std::uint64_t seed_ = 0;
    CLI::Option* randomFaults_ = nullptr;
};

} // namespace tallyfoot::commandline
