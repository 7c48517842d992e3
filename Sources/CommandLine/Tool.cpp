#include "CommandLine/Tool.h"

#include "CommandLine/CatCommand.h"
#include "CommandLine/CollectCommand.h"
#include "CommandLine/DemoCommand.h"
#include "CommandLine/DemoHostCommand.h"

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace tallyfoot::commandline {

namespace {

// Otherwise the first files and pipes would be taken for the standard streams that the caller has closed.
// To read only, so that writing to one of them still fails.
void openClosedStreams() {
    int number = 0;
    while (number >= 0 && number <= STDERR_FILENO) number = ::open("/dev/null", O_RDONLY);
    if (number >= 0) ::close(number);
}

} // namespace

// Every subcommand is an object that declares its options to the parser and runs when it is chosen.
int runTool(int count, char** arguments) {
    openClosedStreams();
    CLI::App app("Tallyfoot's tools for development: run a local collector, read stored records, see it all at work.",
                 "tallyfoot");
    app.require_subcommand(1);
    app.set_version_flag("--version", TALLYFOOT_VERSION);
    // A reader that goes away (tallyfoot cat … | head) is noticed at the write that fails.
    std::signal(SIGPIPE, SIG_IGN);

    int status = 0;
    CollectCommand collect(app, status);
    CatCommand cat(app, status);
    DemoCommand demo(app, status);
    DemoHostCommand demoHost(app, status);
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    } catch (const std::exception& failure) {
        std::cerr << "tallyfoot: " << failure.what() << '\n';
        return 1;
    }
    return status;
}

} // namespace tallyfoot::commandline
