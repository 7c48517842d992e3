#pragma once

namespace tallyfoot::commandline {

// The tool as it is called from the shell. Returns its exit status: 2 for a call that it does not understand, else
// the chosen subcommand's.
int runTool(int count, char** arguments);

} // namespace tallyfoot::commandline
