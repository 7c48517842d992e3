#include "Support/Workload.h"

#include "Support/BenchmarkFolder.h"

#include "Tallyfoot/Tallyfoot.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace tallyfoot::benchmarks {

namespace {

constexpr auto appName = "Benchmark";
constexpr std::string_view separator = "jsonsplit";
constexpr long long aDay = 24LL * 60 * 60;

} // namespace

void startRecording(const std::string& uploadPath) {
    benchmarkFolder();
    Tallyfoot::setShowOutput(false);
    auto configuration = std::make_shared<UploadConfiguration>(aDay, std::numeric_limits<std::int64_t>::max() - 1);
    configuration->setUploadPath(uploadPath);
    Tallyfoot::setAppInfo(std::make_shared<ApplicationInfo>(appName, "bench-1", "Benchmarks", "B-1"));
    Tallyfoot::configure(configuration, {}, [] { return std::make_shared<Authentication>("user-1", "token-1"); });
}

void logOne() {
    Tallyfoot::log(EventType::action,
                   {{LogAttribute::evtCategory, "UIButton"},
                    {LogAttribute::evtAction, "Tap"},
                    {LogAttribute::evtLabel, "Add the selected article to the basket and carry on shopping from there"},
                    {LogAttribute::userId, "user-1"},
                    {LogAttribute::tmspent, "12.5"}});
}

const std::string& oneRecord() {
    static const std::string record = [] {
        forgetLogs();
        logOne();
        for (const auto& entry : std::filesystem::directory_iterator(benchmarkFolder().logs(appName, "Events"))) {
            std::ifstream file(entry.path(), std::ios::binary);
            std::string text((std::istreambuf_iterator<char>(file)), {});
            if (const auto end = text.find(separator); end != std::string::npos)
                return text.substr(0, end + separator.size());
        }
        throw std::runtime_error("the event is not on disk");
    }();
    return record;
}

void forgetLogs() {
    for (const auto& entry : std::filesystem::directory_iterator(benchmarkFolder().logs(appName, "Events")))
        std::filesystem::remove(entry.path());
    logOne(); // makes the new file
}

} // namespace tallyfoot::benchmarks
