#pragma once

#include <optional>
#include <string>

namespace tallyfoot {

// The parts of an upload address that decide where a request goes.
struct HTTPAddress {
    std::string origin; // "https://host:443", in lower case
    std::string host;   // without brackets
    std::string url;    // the whole address, anything beyond ASCII percent-encoded
    std::string user;   // what stands before the host's "@", as "user:password"; empty without

    bool isLoopback() const;
};

// Nothing unless isUploadURL.
std::optional<HTTPAddress> httpAddress(const std::string& url);

} // namespace tallyfoot
