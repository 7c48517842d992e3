#pragma once

#include <optional>
#include <string>
#include <utility>

namespace tallyfoot {

// The user's credentials, made by the host whenever the library asks. The token is never stored.
class Authentication {
public:
    Authentication(std::string userId, std::string authenticationToken,
                   std::optional<std::string> userLogOnTime = std::nullopt)
        : userId_(std::move(userId)), authenticationToken_(std::move(authenticationToken)),
          userLogOnTime_(std::move(userLogOnTime)) {}

    const std::string& userId() const noexcept { return userId_; }
    const std::string& authenticationToken() const noexcept { return authenticationToken_; }
    const std::optional<std::string>& userLogOnTime() const noexcept { return userLogOnTime_; }

private:
    std::string userId_;
    std::string authenticationToken_;
    std::optional<std::string> userLogOnTime_;
};

} // namespace tallyfoot
