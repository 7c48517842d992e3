#include "CommandLine/DemoHostCommand.h"

#include <CLI/CLI.hpp>

namespace tallyfoot::commandline {

DemoHostCommand::DemoHostCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand("demo-host", "The host application of the demo")->group("");
    command->add_option("--url", options_.url)->required();
    command->add_option("--threads", options_.threads)->check(CLI::Range(1, 64));
    command->add_option("--events-count", options_.eventsCount);
    command->add_option("--application", options_.application)->required();
    command->add_option("--user", options_.user);
    command->add_option("--begun", options_.begun);
    command->add_option("--output", options_.outputFile)->required();
    command->callback([this, &status] { status = DemoHost(options_).run(); });
}

} // namespace tallyfoot::commandline
