// Packing closed log files of 5 MiB, against the library underneath used alone and a plain copy.
#include "Support/BenchmarkFolder.h"

#include "Tallyfoot/Storage/Archive.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>
#include <zip.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

using namespace tallyfoot;
using namespace tallyfoot::benchmarks;

constexpr std::size_t fileBytes = 1024 * 1024;
constexpr int files = 5;

const std::vector<std::string>& logFiles() {
    static const std::vector<std::string> paths = [] {
        std::vector<std::string> made;
        for (int number = 0; number < files; ++number) {
            made.push_back(benchmarkFolder().file("07-03-2024T14-05-0" + std::to_string(number) + "-000.log"));
            std::ofstream file(made.back(), std::ios::binary);
            for (std::size_t written = 0; written < fileBytes; written += 64)
                file << "{\n  \"evtAction\" : \"Tap\",\n  \"evtLabel\" : \"Buy it now\"\n}\njsonsplit";
        }
        return made;
    }();
    return paths;
}

std::string archivePath() { return benchmarkFolder().file("archive.zip"); }
void noArchive(const benchmark::State&) { std::filesystem::remove(archivePath()); }

void pack(benchmark::State& state) {
    for (auto _ : state)
        if (!Archive::pack(logFiles(), archivePath())) state.SkipWithError("not packed");
}

void libzipAlone(benchmark::State& state) {
    for (auto _ : state) {
        zip_t* archive = zip_open(archivePath().c_str(), ZIP_CREATE | ZIP_EXCL, nullptr);
        if (archive == nullptr) std::abort();
        for (const auto& path : logFiles()) {
            zip_source_t* source = zip_source_file(archive, path.c_str(), 0, -1);
            const auto index =
                zip_file_add(archive, std::filesystem::path(path).filename().c_str(), source, ZIP_FL_ENC_UTF_8);
            if (index < 0 || zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_STORE, 0) != 0)
                std::abort();
        }
        if (zip_close(archive) != 0) state.SkipWithError("not packed");
    }
}

void copy(benchmark::State& state) {
    std::vector<char> buffer(64 * 1024);
    for (auto _ : state) {
        const int target = open(archivePath().c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
        for (const auto& path : logFiles()) {
            const int source = open(path.c_str(), O_RDONLY | O_CLOEXEC);
            for (ssize_t count = 0; (count = read(source, buffer.data(), buffer.size())) > 0;)
                if (write(target, buffer.data(), static_cast<std::size_t>(count)) != count) std::abort();
            close(source);
        }
        close(target);
    }
}

BENCHMARK(pack)->Setup(noArchive)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(libzipAlone)->Setup(noArchive)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(copy)->Setup(noArchive)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    logFiles();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
