#pragma once

#include "Tallyfoot/Platform/Result.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot::collector {

struct ArchiveEntry {
    std::string name;
    std::uint16_t method = 0; // 0: stored
    bool encrypted = false;
    std::string bytes; // what could be read
    std::string error; // why not all of it could be, a wrong checksum among the reasons; else empty
};

// Reads a ZIP archive from memory, entries in the order of its directory. Fails when it is no archive
// or its directory contradicts itself; an entry that cannot be read carries its own error. A small
// archive must not fill the memory: its entries together unpack to `largestContent` at the most, or
// to the archive's own size where that is more.
Result<std::vector<ArchiveEntry>> readArchive(std::string_view bytes,
                                              std::size_t largestContent = std::size_t{256} << 20U);

// A name without any folder part, safe to use as a file's.
bool isPlainFileName(std::string_view name);

} // namespace tallyfoot::collector
