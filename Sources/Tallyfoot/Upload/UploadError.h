#pragma once

#include <string>

namespace tallyfoot {

// Why an upload ended without a result.
struct UploadError {
    enum class Kind { error, invalidUploadPath, authenticationError, invalidData, invalidResponse };

    Kind kind;
    std::string description; // for `error`: what the underlying failure says
};

} // namespace tallyfoot
