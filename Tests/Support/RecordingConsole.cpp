#include "Support/RecordingConsole.h"

#include <algorithm>
#include <sstream>

namespace tallyfoot::testing {

std::vector<std::string> RecordingConsole::lines() const {
    std::vector<std::string> all;
    std::istringstream stream(text());
    for (std::string line; std::getline(stream, line);) all.push_back(line);
    return all;
}

bool RecordingConsole::contains(std::string_view line) const {
    const auto all = lines();
    return std::find(all.begin(), all.end(), line) != all.end();
}

} // namespace tallyfoot::testing
