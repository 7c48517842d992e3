// Sending an archive of 5 MiB over loopback, against the HTTP library's own multipart post; the
// memory that takes; and what a call to log waits at most meanwhile.
#include "Support/BenchmarkFolder.h"
#include "Support/LoopbackServer.h"
#include "Support/Workload.h"

#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/URLSession.h"
#include "Tallyfoot/Tallyfoot.h"
#include "Tallyfoot/Upload/UploadManager.h"

#include <benchmark/benchmark.h>
#include <curl/curl.h>
#include <malloc.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace {

using namespace tallyfoot;
using namespace tallyfoot::benchmarks;

constexpr std::size_t archiveBytes = std::size_t{5} * 1024 * 1024;
std::string uploadURL;
pid_t serverProcess = -1;

const std::string& archivePath() {
    static const std::string path = [] {
        auto made = benchmarkFolder().file("07-03-2024T14-05-09-123.zip");
        std::ofstream file(made, std::ios::binary);
        std::string block(4096, '\0');
        unsigned state = 1;
        for (std::size_t written = 0; written < archiveBytes; written += block.size()) {
            for (auto& byte : block) byte = static_cast<char>((state = state * 1664525U + 1013904223U) >> 24U);
            file.write(block.data(), static_cast<std::streamsize>(block.size()));
        }
        return made;
    }();
    return path;
}

// --- Sending

// The client on one processor, the server on another, while this lives. Loopback is faster where both share
// one, and the system would choose for each client on its own. A thread begun meanwhile stays there.
class Apart {
public:
    Apart() {
        sched_getaffinity(0, sizeof former_, &former_);
        std::vector<int> processors;
        for (int processor = 0; processor < CPU_SETSIZE; ++processor)
            if (CPU_ISSET(processor, &former_)) processors.push_back(processor);
        if (processors.empty()) return;
        place(0, processors.front());
        place(serverProcess, processors.back());
    }
    ~Apart() {
        for (const pid_t process : {pid_t{0}, serverProcess}) sched_setaffinity(process, sizeof former_, &former_);
    }
    Apart(const Apart&) = delete;
    Apart& operator=(const Apart&) = delete;

private:
    static void place(pid_t process, int processor) {
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(processor, &one);
        sched_setaffinity(process, sizeof one, &one);
    }

    cpu_set_t former_{};
};

class SilentConsole final : public Console {
public:
    void write(std::string_view) noexcept override {}
};

class Sender {
public:
    Sender()
        : manager_(std::make_shared<UploadManager>(
            UploadManager::Collaborators{*defaultPlatformServices().fileManager, *defaultPlatformServices().random,
                                         DebugConsole(console_, isOn_), defaultPlatformServices().makeURLSession(),
                                         [] { return std::string("token-1"); }},
            uploadURL)) {}

    bool send() {
        std::promise<bool> answered;
        manager_->upload(archivePath(), {{"appName", "Benchmark"}, {"delimeter", "jsonsplit"}},
                         [&](const UploadManager::Outcome& outcome) {
                             answered.set_value(std::holds_alternative<std::vector<UploadResult>>(outcome));
                         });
        return answered.get_future().get();
    }

private:
    SilentConsole console_;
    std::atomic<bool> isOn_{false};
    std::shared_ptr<UploadManager> manager_;
};

Sender& sender() {
    static Sender made;
    return made;
}

void upload(benchmark::State& state) {
    const Apart apart;
    for (auto _ : state)
        if (!sender().send()) state.SkipWithError("not confirmed");
}

std::size_t discard(const char*, std::size_t size, std::size_t count, void*) { return size * count; }

void curlAlone(benchmark::State& state) {
    const Apart apart;
    static CURL* const handle = curl_easy_init();
    curl_mime* form = curl_mime_init(handle);
    curl_mimepart* field = curl_mime_addpart(form);
    curl_mime_name(field, "appName");
    curl_mime_data(field, "Benchmark", CURL_ZERO_TERMINATED);
    curl_mimepart* file = curl_mime_addpart(form);
    curl_mime_name(file, "files");
    curl_mime_filedata(file, archivePath().c_str());
    curl_easy_setopt(handle, CURLOPT_URL, uploadURL.c_str());
    curl_easy_setopt(handle, CURLOPT_MIMEPOST, form);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, discard);
    curl_slist* const headers = curl_slist_append(nullptr, "Expect:"); // ours waits for no 100 either
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers);
    for (auto _ : state)
        if (curl_easy_perform(handle) != CURLE_OK) state.SkipWithError("not sent");
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, nullptr);
    curl_easy_setopt(handle, CURLOPT_MIMEPOST, nullptr);
    curl_slist_free_all(headers);
    curl_mime_free(form);
}

BENCHMARK(upload)->Iterations(5)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(curlAlone)->Iterations(5)->UseRealTime()->Unit(benchmark::kMillisecond);

// --- Memory: the peak while sending over what was resident before, in archives. Reported as the
// iteration's time: one "second" is one archive.

double residentBytes(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(field + ":")) return std::strtod(line.c_str() + field.size() + 1, nullptr) * 1024;
    return 0;
}

void memoryOfUpload(benchmark::State& state) {
    for (auto _ : state) {
        malloc_trim(0); // what the allocator kept of earlier uploads would hide what this one takes
        std::ofstream("/proc/self/clear_refs") << "5"; // the peak starts anew
        const double before = residentBytes("VmRSS");
        if (!sender().send()) state.SkipWithError("not confirmed");
        state.SetIterationTime(std::max(residentBytes("VmHWM") - before, 0.0) / static_cast<double>(archiveBytes));
    }
}
BENCHMARK(memoryOfUpload)->Iterations(1)->UseManualTime();

// --- The longest call to log while 5 MiB of records are packed, sent and confirmed. Reported as the
// iteration's time.

double oneCall() {
    const auto began = std::chrono::steady_clock::now();
    logOne();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
}

bool isEmpty(const std::string& folder) {
    return std::filesystem::is_empty(benchmarkFolder().logs("Benchmark", folder));
}

void longestLogWhileSending(benchmark::State& state) {
    const auto events = archiveBytes / oneRecord().size();
    for (auto _ : state) {
        forgetLogs();
        for (std::size_t event = 0; event < events; ++event) logOne();
        Tallyfoot::setIgnoreFileSizeThreshold(true); // the next event closes the file and sends it
        double longest = oneCall();
        Tallyfoot::setIgnoreFileSizeThreshold(false);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        std::size_t calls = 1;
        do {
            for (int call = 0; call < 100; ++call) longest = std::max(longest, oneCall());
            calls += 100;
            if (std::chrono::steady_clock::now() > deadline) {
                state.SkipWithError("not confirmed in time");
                return;
            }
        } while (!isEmpty("Upload") || !isEmpty("Backup"));
        state.SetIterationTime(longest);
        state.counters["calls"] = static_cast<double>(calls);
    }
}

void longestLogAlone(benchmark::State& state) {
    for (auto _ : state) {
        forgetLogs();
        double longest = 0;
        for (int call = 0; call < 15000; ++call) longest = std::max(longest, oneCall());
        state.SetIterationTime(longest);
    }
}
BENCHMARK(longestLogWhileSending)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(longestLogAlone)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    const LoopbackServer server; // first: it forks
    uploadURL = server.url();
    serverProcess = server.process();
    startRecording(uploadURL);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
