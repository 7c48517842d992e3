#pragma once

#include <string>
#include <vector>

namespace tallyfoot::collector {

// One violation of the wire format. The upload it was found in is stored as far as it can be read.
struct Problem {
    std::string kind;   // one word, stable, for programs: "boundary", "checksum", "record" …
    std::string detail; // one sentence, for people
    std::string file;   // the archive's entry that it was found in, or empty
};

using Problems = std::vector<Problem>;

} // namespace tallyfoot::collector
