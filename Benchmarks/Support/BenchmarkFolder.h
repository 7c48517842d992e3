#pragma once

#include <filesystem>
#include <string>

namespace tallyfoot::benchmarks {

// A folder of this process's own, below TALLYFOOT_BENCHMARK_FOLDER or the working folder, gone with
// its object. The library's files go into it too: it is this process's home from then on.
class BenchmarkFolder {
public:
    BenchmarkFolder();
    ~BenchmarkFolder();
    BenchmarkFolder(const BenchmarkFolder&) = delete;
    BenchmarkFolder& operator=(const BenchmarkFolder&) = delete;

    std::string file(const std::string& name) const { return (path_ / name).string(); }
    std::filesystem::path logs(const std::string& appName, const std::string& folder) const;

private:
    std::filesystem::path path_;
};

// The process's one, made on first use.
const BenchmarkFolder& benchmarkFolder();

} // namespace tallyfoot::benchmarks
