#include "Support/BenchmarkFolder.h"

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace tallyfoot::benchmarks {

BenchmarkFolder::BenchmarkFolder() {
    const char* below = std::getenv("TALLYFOOT_BENCHMARK_FOLDER");
    path_ = std::filesystem::absolute(below != nullptr ? below : ".") / ("benchmark-" + std::to_string(getpid()));
    std::filesystem::create_directories(path_);
    setenv("HOME", path_.c_str(), 1);
    unsetenv("XDG_DATA_HOME");
    unsetenv("XDG_CONFIG_HOME");
}

BenchmarkFolder::~BenchmarkFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path BenchmarkFolder::logs(const std::string& appName, const std::string& folder) const {
    return path_ / ".local/share/Tallyfoot" / appName / folder;
}

const BenchmarkFolder& benchmarkFolder() {
    static const BenchmarkFolder folder;
    return folder;
}

} // namespace tallyfoot::benchmarks
