#include "Support/ToolRun.h"

#include "CommandLine/ChildProcess.h"
#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tallyfoot::testing {

namespace {

constexpr std::chrono::seconds patience{100};

// Standard error goes to a file, which bash sees to; the rest is read while the program runs.
ToolRun run(const std::string& script, const std::vector<std::string>& arguments) {
    const TemporaryFolder folder;
    const auto complaints = folder / "complaints";
    std::vector<std::string> all{"/bin/bash", "-c", "exec 2> \"$COMPLAINTS\"\n" + script, "bash"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    auto started = commandline::ChildProcess::start(all, {{"COMPLAINTS", complaints}});
    ToolRun result;
    if (!started) {
        ADD_FAILURE() << started.error().description;
        return result;
    }
    auto& process = started.value();
    process.closeInput();
    while (auto line = process.readLine(patience)) result.lines.push_back(*std::move(line));
    result.status = process.wait(patience).value_or(-1);
    result.complaints = readFile(complaints);
    return result;
}

} // namespace

std::string tool() { return TALLYFOOT_TOOL; }

ToolRun runTool(const std::vector<std::string>& arguments) {
    std::vector<std::string> all{tool()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return run("exec \"$@\"", all);
}

ToolRun runShell(const std::string& command) { return run(command, {}); }

} // namespace tallyfoot::testing
