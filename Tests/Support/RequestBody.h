#pragma once

#include "Tallyfoot/Platform/URLSession.h"

#include <string>

namespace tallyfoot::testing {

// The request's body in one piece, as a server sees it.
inline std::string bodyOf(const URLRequest& request) {
    std::string body;
    for (const auto& piece : request.body) body += piece;
    return body;
}

} // namespace tallyfoot::testing
