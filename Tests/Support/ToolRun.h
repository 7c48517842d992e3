#pragma once

#include <string>
#include <vector>

namespace tallyfoot::testing {

// A finished run of a program.
struct ToolRun {
    int status = -1;
    std::vector<std::string> lines; // of standard output
    std::string complaints;         // standard error
};

std::string tool(); // path of `tallyfoot`
ToolRun runTool(const std::vector<std::string>& arguments);
ToolRun runShell(const std::string& command); // with bash

} // namespace tallyfoot::testing
