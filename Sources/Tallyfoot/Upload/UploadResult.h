#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tallyfoot {

// The server's answer about one archive.
struct UploadResult {
    std::string statusCode; // sent as a number or a text; both mean the same
    std::string statusCodeInfo;
    std::string filename;
    std::optional<std::vector<std::string>> success; // names of the log files that arrived
    std::optional<std::vector<std::string>> failure; // names of those that did not
};

} // namespace tallyfoot
