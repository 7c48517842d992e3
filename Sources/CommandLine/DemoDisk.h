#pragma once

#include "CommandLine/DemoLedger.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot::commandline {

// What the demo's host has on disk at a moment.
struct DemoDisk {
    struct File {
        std::string path; // below the folder that was read
        std::size_t records = 0;
        std::uintmax_t bytes = 0;
    };

    std::vector<File> files;             // logs and archives
    std::map<std::int64_t, int> events;  // number -> how often it is there
    std::vector<std::string> complaints; // torn tails, what is no record, what cannot be read
    std::size_t open = 0;                // records in "Events", the file being written
    std::size_t closed = 0;              // in "Upload", waiting to be packed
    std::size_t packed = 0;              // in "Backup", on their way
    bool hasArchives = false;

    // A folder in which nobody moves files; otherwise a file may be seen twice or not at all.
    // `number` tells an event by its evtId.
    static DemoDisk read(const std::filesystem::path& folder,
                         const std::function<std::int64_t(std::string_view)>& number = DemoLedger::number);
};

} // namespace tallyfoot::commandline
