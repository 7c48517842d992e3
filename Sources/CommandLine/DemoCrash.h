#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tallyfoot::commandline {

// A crash that waits in a host's user defaults for the host's next start.
struct DemoCrash {
    std::string identifier; // the evtId that it will be told under
    std::string reason;

    // `configuration` is the folder that the host was given for its configuration. Nothing where none waits.
    static std::optional<DemoCrash> waiting(const std::filesystem::path& configuration);
};

} // namespace tallyfoot::commandline
