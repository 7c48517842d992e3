// What one event costs its caller, against the same bytes written bare and through a known logger.
#include "Support/BenchmarkFolder.h"
#include "Support/Percentiles.h"
#include "Support/Workload.h"

#include "Tallyfoot/Crash/CrashContext.h"
#include "Tallyfoot/Events/Attributes.h"
#include "Tallyfoot/Events/FileEventFormatter.h"
#include "Tallyfoot/Platform/PlatformServices.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace tallyfoot;
using namespace tallyfoot::benchmarks;

// Few enough that no log file fills up within one measurement.
constexpr int eventsAlone = 16000;
constexpr int eventsOfFour = 4000;
constexpr int threads = 4;

// A file opened for appending, empty at the start of each measurement.
class BareFile {
public:
    void reopen() {
        if (descriptor_ >= 0) close(descriptor_);
        descriptor_ =
            open(benchmarkFolder().file("bare").c_str(), O_CREAT | O_TRUNC | O_APPEND | O_WRONLY | O_CLOEXEC, 0600);
    }

    void write() const {
        const auto& record = oneRecord();
        if (::write(descriptor_, record.data(), record.size()) != static_cast<ssize_t>(record.size())) std::abort();
    }

    void writeAndStat() const {
        write();
        struct stat facts {};
        if (fstat(descriptor_, &facts) != 0) std::abort();
        benchmark::DoNotOptimize(facts.st_size);
    }

private:
    int descriptor_ = -1;
} bareFile;

void emptyBareFile(const benchmark::State&) { bareFile.reopen(); }
void emptyLog(const benchmark::State&) { forgetLogs(); }

// --- One thread, and four at once: what a call takes

void log(benchmark::State& state) {
    for (auto _ : state) logOne();
}
void write(benchmark::State& state) {
    for (auto _ : state) bareFile.write();
}
void writeAndStat(benchmark::State& state) {
    for (auto _ : state) bareFile.writeAndStat();
}

std::shared_ptr<spdlog::logger> otherLogger;
void emptyOtherLog(const benchmark::State&) {
    otherLogger = std::make_shared<spdlog::logger>(
        "other", std::make_shared<spdlog::sinks::basic_file_sink_mt>(benchmarkFolder().file("other"), true));
    otherLogger->set_pattern("%v"); // the text as it is: its own time stamp would cost it more
    otherLogger->flush_on(spdlog::level::trace);
}
void spdlogFlushingEach(benchmark::State& state) {
    const auto& record = oneRecord();
    for (auto _ : state) otherLogger->log(spdlog::level::info, spdlog::string_view_t(record.data(), record.size()));
}

// The same record again, with the logger's own formatting and time stamp: the time is made anew, the identifier is not.
void emptyFormattingLog(const benchmark::State& state) {
    emptyOtherLog(state);
    otherLogger->set_pattern("%v%Y-%m-%d %H:%M:%S %z\"}jsonsplit");
}
void spdlogMakingTheRecord(benchmark::State& state) {
    for (auto _ : state)
        otherLogger->info(R"({{
  "evtAction" : "{}",
  "evtCategory" : "{}",
  "evtId" : "{}",
  "evtLabel" : "{}",
  "evtType" : "{}",
  "pgName" : "{}",
  "tmspent" : "{}",
  "userId" : "{}",
  "pgPrnt" : "{}",
  "evtLclTimestamp" : ")",
                          "Tap", "UIButton", "0E984725-C51C-4BF4-9960-E1C80E27ABA0",
                          "Add the selected article to the basket and carry on shopping from there", "action", "",
                          "12.5", "user-1", "iOS");
}

BENCHMARK(log)->Setup(emptyLog)->Iterations(eventsAlone)->UseRealTime();
BENCHMARK(write)->Setup(emptyBareFile)->Iterations(eventsAlone)->UseRealTime();
BENCHMARK(writeAndStat)->Setup(emptyBareFile)->Iterations(eventsAlone)->UseRealTime();
BENCHMARK(spdlogFlushingEach)->Setup(emptyOtherLog)->Iterations(eventsAlone)->UseRealTime();
BENCHMARK(spdlogMakingTheRecord)->Setup(emptyFormattingLog)->Iterations(eventsAlone)->UseRealTime();
BENCHMARK(log)->Setup(emptyLog)->Threads(threads)->Iterations(eventsOfFour)->UseRealTime();
BENCHMARK(write)->Setup(emptyBareFile)->Threads(threads)->Iterations(eventsOfFour)->UseRealTime();
BENCHMARK(writeAndStat)->Setup(emptyBareFile)->Threads(threads)->Iterations(eventsOfFour)->UseRealTime();

// --- Four at once: the call that one in a hundred exceeds. Reported as the iteration's time.

double slowestButOnePercent(const std::function<void()>& step) {
    std::vector<std::vector<double>> samples(threads);
    std::latch start(threads);
    {
        std::vector<std::jthread> writers;
        for (auto& own : samples)
            writers.emplace_back([&own, &start, &step] {
                own.reserve(eventsOfFour);
                start.arrive_and_wait();
                for (int event = 0; event < eventsOfFour; ++event) {
                    const auto began = std::chrono::steady_clock::now();
                    step();
                    own.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count());
                }
            });
    }
    std::vector<double> all;
    for (const auto& own : samples) all.insert(all.end(), own.begin(), own.end());
    return percentile(std::move(all), 0.99);
}

void p99OfLog(benchmark::State& state) {
    for (auto _ : state) state.SetIterationTime(slowestButOnePercent(logOne));
}
void p99OfWrite(benchmark::State& state) {
    for (auto _ : state) state.SetIterationTime(slowestButOnePercent([] { bareFile.write(); }));
}
BENCHMARK(p99OfLog)->Setup(emptyLog)->Iterations(1)->UseManualTime();
BENCHMARK(p99OfWrite)->Setup(emptyBareFile)->Iterations(1)->UseManualTime();

// --- The text alone

void format(benchmark::State& state) {
    const Attributes properties{
        {LogAttribute::evtAction, "Tap"},
        {LogAttribute::evtCategory, "UIButton"},
        {LogAttribute::evtId, "0E984725-C51C-4BF4-9960-E1C80E27ABA0"},
        {LogAttribute::evtLabel, "Add the selected article to the basket and carry on shopping from there"},
        {LogAttribute::evtLclTimestamp, "2024-03-07 14:05:09 +0000"},
        {LogAttribute::evtType, "action"},
        {LogAttribute::screenTitle, "Article"},
        {LogAttribute::tmspent, "12.5"},
        {LogAttribute::userId, "user-1"},
        {LogAttribute::window, "iOS"}};
    const FileEventFormatter formatter;
    std::string text;
    for (auto _ : state) {
        if (!formatter.format(properties, text)) state.SkipWithError("not formatted");
        benchmark::DoNotOptimize(text.data());
    }
    state.counters["bytes"] = static_cast<double>(text.size());
}
BENCHMARK(format)->Iterations(eventsAlone)->UseRealTime();

// --- What it costs that a crash of the thread will be heard: at each event, and of a thread's first one

constexpr int preparations = 1000000;
constexpr int threadsStarted = 500;

void prepareThread(benchmark::State& state) {
    CrashContext context(*defaultPlatformServices().crashHooks);
    for (auto _ : state) {
        context.prepareThread();
        benchmark::ClobberMemory();
    }
}
void preparedThread(benchmark::State& state) {
    CrashContext context(*defaultPlatformServices().crashHooks);
    for (auto _ : state) std::thread([&] { context.prepareThread(); }).join();
}
void bareThread(benchmark::State& state) {
    for (auto _ : state) std::thread([] {}).join();
}
BENCHMARK(prepareThread)->Iterations(preparations)->UseRealTime();
BENCHMARK(preparedThread)->Iterations(threadsStarted)->UseRealTime();
BENCHMARK(bareThread)->Iterations(threadsStarted)->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    startRecording("http://127.0.0.1:9/upload"); // nothing listens, nothing is sent
    benchmark::AddCustomContext("record_bytes", std::to_string(oneRecord().size()));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
