#include "Facade/TallyfootTest.h"

#include <cstdlib>
#include <filesystem>

namespace tallyfoot::testing {

TallyfootTest::TallyfootTest() {
    ::setenv("XDG_DATA_HOME", (root_ / "data").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (root_ / "config").c_str(), 1);
    ::setenv("TALLYFOOT_MAIN_BUNDLE", (root_ / "bundle").c_str(), 1);
    Tallyfoot::setShowOutput(false);
    configuration_->setUploadPath("http://127.0.0.1:1/upload"); // nobody listens there
}

void TallyfootTest::start(const std::vector<std::string>& ignoreClasses) {
    setApplication("Shop");
    configure(ignoreClasses);
}

void TallyfootTest::configure(const std::vector<std::string>& ignoreClasses) {
    Tallyfoot::configure(configuration_, ignoreClasses, [this] {
        ++authenticationsAsked_;
        return std::make_shared<Authentication>("user-1", "token-1");
    });
}

void TallyfootTest::setApplication(const std::string& appName) {
    Tallyfoot::setAppInfo(std::make_shared<ApplicationInfo>(appName, "id", "area", "area-id"));
}

std::string TallyfootTest::stored(const std::string& appName) const {
    std::string all;
    const std::filesystem::path folder = root_ / "data/Tallyfoot/" + appName + "/Events";
    if (std::filesystem::exists(folder))
        for (const auto& file : std::filesystem::directory_iterator(folder)) all += readFile(file.path());
    return all;
}

std::vector<nlohmann::json> TallyfootTest::records(const std::string& appName) const {
    std::vector<nlohmann::json> parsed;
    const std::string text = stored(appName);
    for (std::size_t begin = 0; begin < text.size();) {
        const auto end = text.find("jsonsplit", begin);
        parsed.push_back(nlohmann::json::parse(text.substr(begin, end - begin)));
        begin = end + 9;
    }
    return parsed;
}

} // namespace tallyfoot::testing
