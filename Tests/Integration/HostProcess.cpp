#include "Integration/HostProcess.h"

#include "Collector/RecordReader.h"
#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <zip.h>

#include <csignal>
#include <sstream>
#include <stdexcept>

namespace tallyfoot::testing {

namespace {

using std::chrono_literals::operator""s;
constexpr auto patience = 60s;

void addEvents(const std::string& log, std::multiset<std::string>& events) {
    collector::RecordReader reader(log);
    while (const auto piece = reader.next())
        if (piece->kind == collector::LogPiece::Kind::record)
            events.insert(nlohmann::json::parse(piece->text).at("evtId").get<std::string>());
}

void addArchive(const std::filesystem::path& path, std::multiset<std::string>& events) {
    zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, nullptr);
    ASSERT_NE(archive, nullptr) << path;
    for (zip_int64_t index = 0; index < zip_get_num_entries(archive, 0); ++index) {
        zip_file_t* file = zip_fopen_index(archive, static_cast<zip_uint64_t>(index), 0);
        std::string log;
        char block[65536];
        for (zip_int64_t count = 0; (count = zip_fread(file, block, sizeof block)) > 0;)
            log.append(block, static_cast<std::size_t>(count));
        zip_fclose(file);
        addEvents(log, events);
    }
    zip_discard(archive);
}

std::vector<pid_t> threads(pid_t process) {
    std::vector<pid_t> all;
    std::error_code failure;
    for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task", failure))
        all.push_back(static_cast<pid_t>(std::stol(task.path().filename().string())));
    return all;
}

// From a crash on the library listens to the alarm that ends a process which hangs.
bool hearsAlarms(pid_t process) {
    std::istringstream lines(readFile("/proc/" + std::to_string(process) + "/status"));
    const std::string caught = "SigCgt:";
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with(caught))
            return (std::stoull(line.substr(caught.size()), nullptr, 16) >> (SIGALRM - 1) & 1U) != 0;
    return false;
}

commandline::ChildProcess startHost(const Device& device, const std::vector<std::string>& arguments) {
    std::vector<std::string> all{TALLYFOOT_LOGGING_HOST};
    all.insert(all.end(), arguments.begin(), arguments.end());
    auto process = commandline::ChildProcess::start(all, device.environment());
    if (!process) throw std::runtime_error(process.error().description);
    return std::move(process).value();
}

} // namespace

std::map<std::string, std::string> Device::environment() const {
    return {{"XDG_DATA_HOME", (root / "data").string()},
            {"XDG_CONFIG_HOME", (root / "config").string()},
            {"TALLYFOOT_MAIN_BUNDLE", (root / "bundle").string()}};
}

std::multiset<std::string> Device::storedEvents() const {
    std::multiset<std::string> events;
    if (!std::filesystem::exists(library())) return events;
    for (const auto& item : std::filesystem::recursive_directory_iterator(library())) {
        const auto name = item.path().filename().string();
        if (name.starts_with('.')) continue;
        if (item.path().extension() == ".log") addEvents(readFile(item.path()), events);
        if (item.path().extension() == ".zip") addArchive(item.path(), events);
    }
    return events;
}

std::optional<std::string> HostProcess::nextAcknowledgement() {
    constexpr std::string_view mark = "ack ";
    while (auto line = process_.readLine(patience))
        if (line->starts_with(mark)) return line->substr(mark.size());
    return std::nullopt;
}

HostProcess::HostProcess(const Device& device, const std::string& url, const std::string& application,
                         const std::string& run)
    : process_(startHost(device, {url, application, run})) {
    EXPECT_EQ(nextAcknowledgement().value_or("nothing"), "ready");
}

void HostProcess::awaitAcknowledgements(std::size_t count) {
    for (std::size_t event = 0; event < count; ++event) {
        const auto id = nextAcknowledgement();
        ASSERT_TRUE(id) << "the host stopped after " << acknowledged_.size() << " events";
        acknowledged_.insert(*id);
    }
}

void HostProcess::kill() {
    process_.signal(SIGKILL);
    readToEnd();
    EXPECT_EQ(process_.wait(patience).value_or(-1), 128 + SIGKILL);
}

// What stands in the pipe was acknowledged before the end.
void HostProcess::readToEnd() {
    while (const auto id = nextAcknowledgement()) acknowledged_.insert(*id);
}

std::optional<int> HostProcess::crash(int signal, std::mt19937& random) {
    const auto process = process_.identifier();
    std::optional<int> status;
    const auto deadline = std::chrono::steady_clock::now() + patience;
    // A signal to a thread that is just ending goes with the thread: then another one gets it.
    while (!status && std::chrono::steady_clock::now() < deadline) {
        const auto tasks = threads(process);
        if (tasks.empty()) break;
        const auto thread = tasks[std::uniform_int_distribution<std::size_t>(0, tasks.size() - 1)(random)];
        if (::syscall(SYS_tgkill, process, thread, signal) != 0) continue;
        status = process_.wait(1s);
        if (!status && hearsAlarms(process)) status = process_.wait(patience);
    }
    readToEnd();
    return status;
}

void HostProcess::quit() {
    process_.writeLine("quit");
    EXPECT_EQ(process_.wait(patience).value_or(-1), 0);
}

std::set<std::string> deliver(HostProcess& host, CollectorProcess& collector, std::set<std::string> awaited) {
    for (int round = 0; round < 60 && !awaited.empty(); ++round) {
        // A switch sends what other applications have left; one event more than the threshold
        // triggers an upload of this one's.
        host.tell("switch Cafe");
        host.tell("switch Shop");
        const std::size_t fewMore = 11;
        host.tell("log " + std::to_string(fewMore));
        host.awaitAcknowledgements(fewMore);
        const std::size_t missing = awaited.size();
        for (const auto& event : collector.confirmed()) awaited.erase(event.at("evtId").get<std::string>());
        if (awaited.empty()) break;
        if (awaited.size() == missing)
            (void)collector.expect(
                {{"count", 1}, {"match", {{"evtId", *awaited.begin()}}}, {"timeoutMilliseconds", 500}});
    }
    return awaited;
}

} // namespace tallyfoot::testing
