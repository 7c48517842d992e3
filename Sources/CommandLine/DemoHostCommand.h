#pragma once

#include "CommandLine/DemoHost.h"

#include <CLI/App.hpp>

namespace tallyfoot::commandline {

// tallyfoot demo-host: the host that `tallyfoot demo` starts; not in the list of commands.
class DemoHostCommand {
public:
    DemoHostCommand(CLI::App& app, int& status); // both must outlive it

private:
    DemoHostOptions options_;
};

} // namespace tallyfoot::commandline
