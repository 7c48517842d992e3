#pragma once

#include "Tallyfoot/Platform/Result.h"

#include <nlohmann/json.hpp>

#include <string>

namespace tallyfoot::commandline {

// Talks to a collector on this machine. A request that gets no JSON answer is an error.
class CollectorClient {
public:
    explicit CollectorClient(int port) : port_(port) {}

    int port() const { return port_; }

    struct Reply {
        int status = 0;
        nlohmann::json body;
    };

    // `path` begins with a slash and may end in a query.
    Result<Reply> get(const std::string& path) const;
    Result<Reply> post(const std::string& path, const nlohmann::json& body) const;

private:
    int port_;
};

} // namespace tallyfoot::commandline
