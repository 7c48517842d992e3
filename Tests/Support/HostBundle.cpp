#include "Support/HostBundle.h"

#include <cstdlib>

namespace tallyfoot::testing {

HostBundle::HostBundle() { ::setenv("TALLYFOOT_MAIN_BUNDLE", path().c_str(), 1); }

HostBundle::HostBundle(std::string_view bundleName) : HostBundle() {
    setInformation("<key>CFBundleName</key><string>" + std::string(bundleName) + "</string>");
}

void HostBundle::setInformation(std::string_view entries) { writeFile(folder_ / "Info.plist", xmlDictionary(entries)); }

void HostBundle::addEnvironment(const std::string& framework, std::string_view entries, const std::string& folder) {
    writeFile(environmentPath(framework, folder), xmlDictionary(entries));
}

std::string HostBundle::environmentPath(const std::string& framework, const std::string& folder) const {
    return (folder_.path() / "Frameworks" / (framework + ".framework") / folder / "Environment.plist").string();
}

std::string xmlDictionary(std::string_view entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\"><dict>"
           + std::string(entries) + "</dict></plist>\n";
}

} // namespace tallyfoot::testing
