#pragma once

#include "Support/TemporaryFolder.h"

#include <string>
#include <string_view>

namespace tallyfoot::testing {

// The main bundle of this test's process: a folder of its own. Made before the first use of the
// process's platform, which looks at it only once.
class HostBundle {
public:
    HostBundle(); // without Info.plist
    explicit HostBundle(std::string_view bundleName);

    std::string path() const { return folder_.path().string(); }

    // The property list's dictionary, as XML: "<key>…</key><string>…</string>".
    void setInformation(std::string_view entries);
    void addEnvironment(const std::string& framework, std::string_view entries, const std::string& folder = "");
    std::string environmentPath(const std::string& framework, const std::string& folder = "") const;

private:
    TemporaryFolder folder_;
};

// A whole XML property list around the entries of its dictionary.
std::string xmlDictionary(std::string_view entries);

} // namespace tallyfoot::testing
