#pragma once

#include "Tallyfoot/Export.h"

#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

class Coder;

// Who the host application is. Fixed once made. What is ill-formed in a text becomes U+FFFD, as it
// would in the store: an application is known again by its name. No text may be a null pointer.
class TALLYFOOT_EXPORT ApplicationInfo {
public:
    static constexpr const char* archiveClassName = "ApplicationInfo";

    // Without a name, or with none given, the main bundle's "CFBundleName" is used.
    ApplicationInfo(std::optional<std::string> appName, std::string_view appId, std::string_view bizArea,
                    std::string_view bizAreaId);
    ApplicationInfo(std::string_view appId, std::string_view bizArea, std::string_view bizAreaId);

    // Archived by key under the fields' own names, in their order. Decoding is fatal without
    // "appId", "bizArea" or "bizAreaId"; without "appName" it takes the bundle's name.
    explicit ApplicationInfo(const Coder& coder);
    void encode(Coder& coder) const;

    const std::string& appName() const noexcept { return appName_; }

    const std::string& appId() const noexcept { return appId_; }

    const std::string& bizArea() const noexcept { return bizArea_; }

    const std::string& bizAreaId() const noexcept { return bizAreaId_; }

private:
    std::string appName_;
    std::string appId_;
    std::string bizArea_;
    std::string bizAreaId_;
};

} // namespace tallyfoot
