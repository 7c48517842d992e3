#include "Tallyfoot/Facade/Configuration/Authentication.h"

#include "Tallyfoot/Platform/UTF8.h"

#include <utility>

namespace tallyfoot {

Authentication::Authentication(std::string_view userId, std::string authenticationToken,
                               std::optional<std::string> userLogOnTime)
    : userId_(utf8::wellFormed(userId)), authenticationToken_(std::move(authenticationToken)),
      userLogOnTime_(std::move(userLogOnTime)) {}

} // namespace tallyfoot
