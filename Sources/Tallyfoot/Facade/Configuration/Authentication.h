#pragma once

#include "Tallyfoot/Export.h"

#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

// The user's credentials, made by the host whenever the library asks. The token is never stored.
// What is ill-formed in a user id becomes U+FFFD, as it would in the store: a user is known again by it.
// No text may be a null pointer.
class TALLYFOOT_EXPORT Authentication {
public:
    Authentication(std::string_view userId, std::string authenticationToken,
                   std::optional<std::string> userLogOnTime = std::nullopt);

    const std::string& userId() const noexcept { return userId_; }
    const std::string& authenticationToken() const noexcept { return authenticationToken_; }
    const std::optional<std::string>& userLogOnTime() const noexcept { return userLogOnTime_; }

private:
    std::string userId_;
    std::string authenticationToken_;
    std::optional<std::string> userLogOnTime_;
};

} // namespace tallyfoot
