#include "Tallyfoot/Facade/Configuration/ApplicationInfo.h"

#include "Tallyfoot/Platform/Bundle.h"
#include "Tallyfoot/Platform/Coder.h"
#include "Tallyfoot/Platform/FatalError.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/UTF8.h"

#include <utility>

namespace tallyfoot {

namespace {

std::string bundleName() {
    return defaultPlatformServices().bundles->mainBundle().information("CFBundleName").value_or("");
}

std::string nameOrBundleName(std::optional<std::string> name) { return name ? *std::move(name) : bundleName(); }

// An archive without an identity is nobody's: guessing would mix one application's logs with another's.
std::string required(const Coder& coder, std::string_view key) {
    auto text = coder.decode(key);
    if (!text) fatalError("an archived ApplicationInfo has no text under \"" + std::string(key) + "\"");
    return *std::move(text);
}

} // namespace

ApplicationInfo::ApplicationInfo(std::optional<std::string> appName, std::string_view appId, std::string_view bizArea,
                                 std::string_view bizAreaId)
    : appName_(utf8::wellFormed(nameOrBundleName(std::move(appName)))), appId_(utf8::wellFormed(appId)),
      bizArea_(utf8::wellFormed(bizArea)), bizAreaId_(utf8::wellFormed(bizAreaId)) {}

ApplicationInfo::ApplicationInfo(std::string_view appId, std::string_view bizArea, std::string_view bizAreaId)
    : ApplicationInfo(std::nullopt, appId, bizArea, bizAreaId) {}

ApplicationInfo::ApplicationInfo(const Coder& coder)
    : appName_(nameOrBundleName(coder.decode("appName"))), appId_(required(coder, "appId")),
      bizArea_(required(coder, "bizArea")), bizAreaId_(required(coder, "bizAreaId")) {}

void ApplicationInfo::encode(Coder& coder) const {
    coder.encode(appName_, "appName");
    coder.encode(appId_, "appId");
    coder.encode(bizArea_, "bizArea");
    coder.encode(bizAreaId_, "bizAreaId");
}

} // namespace tallyfoot
