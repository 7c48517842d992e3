#pragma once

#include "Tallyfoot/Platform/Result.h"

#include <nlohmann/json_fwd.hpp>

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

// Of an answer's "response" object, whose keys are the fields' names; other keys are passed over.
// A status code must be there. Without the two texts they are empty, without the two lists there
// are none: an archive that the server has taken is not sent again for want of a courtesy. A member
// that is there, not null and of another kind is an error that names it.
Result<UploadResult> decodeUploadResult(const nlohmann::json& response);

} // namespace tallyfoot
