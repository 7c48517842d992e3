#pragma once

#include <CLI/App.hpp>

#include <string>
#include <vector>

namespace tallyfoot::commandline {

// tallyfoot cat: prints stored records, one compact JSON object a line.
class CatCommand {
public:
    CatCommand(CLI::App& app, int& status); // both must outlive it

private:
    int run() const;

    std::vector<std::string> paths_;
};

} // namespace tallyfoot::commandline
