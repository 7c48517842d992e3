#include "Crash/CrashHost.h"

#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"
#include "Tallyfoot/Platform/Posix/PosixUserDefaults.h"
#include "Tallyfoot/Platform/Posix/UserDefaultsFolder.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>

// Nobody catches what a crash throws.
int main(int count, char** arguments) {
    ::testing::InitGoogleMock(&count, arguments);
    GTEST_FLAG_SET(catch_exceptions, false);
    return RUN_ALL_TESTS();
}

namespace tallyfoot::testing {

namespace {

using nlohmann::json;

constexpr int patience = 60'000; // milliseconds

// The child's standard error, read to its end; kills a child that has hung.
std::string readToEnd(int file, pid_t child) {
    std::string text;
    std::array<char, 4096> block{};
    pollfd descriptor{file, POLLIN, 0};
    while (::poll(&descriptor, 1, patience) == 1) {
        const auto count = ::read(file, block.data(), block.size());
        if (count <= 0) return text;
        text.append(block.data(), static_cast<std::size_t>(count));
    }
    ADD_FAILURE() << "the process hangs";
    ::kill(child, SIGKILL);
    return text;
}

} // namespace

CrashTest::CrashTest() : configuration_(std::make_shared<UploadConfiguration>(3600, 1000000)) {
    ::setenv("XDG_DATA_HOME", (root_ / "data").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (root_ / "config").c_str(), 1);
    ::setenv("TALLYFOOT_MAIN_BUNDLE", (root_ / "bundle").c_str(), 1);
    configuration_->setUploadPath("http://127.0.0.1:1/upload"); // nobody listens there
}

void CrashTest::configure(const std::vector<std::string>& ignoreClasses) {
    Tallyfoot::setShowOutput(false);
    Tallyfoot::configure(configuration_, ignoreClasses,
                         [] { return std::make_shared<Authentication>("user-1", "token-1"); });
}

void CrashTest::setApplication() {
    Tallyfoot::setAppInfo(std::make_shared<ApplicationInfo>("Shop", "id", "area", "area-id"));
}

void CrashTest::start() {
    setApplication();
    configure();
}

::testing::AssertionResult CrashTest::crashes(int status, const std::function<void()>& crash) {
    return endsWith(status, [&] {
        start();
        crash();
    });
}

::testing::AssertionResult CrashTest::endsWith(int status, const std::function<void()>& whole) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return ::testing::AssertionFailure() << "no pipe";
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDERR_FILENO);
        whole();
        ::_exit(0);
    }
    ::close(ends[1]);
    message = readToEnd(ends[0], child);
    ::close(ends[0]);
    int ended = 0;
    ::waitpid(child, &ended, 0);
    const int actual = WIFEXITED(ended) ? WEXITSTATUS(ended) : 128 + WTERMSIG(ended);
    if (actual == status) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "it ended with " << actual << "\n" << message;
}

std::optional<PropertyList> CrashTest::stored() const {
    const auto folder = userDefaultsFolder(root_ / "bundle");
    return PosixUserDefaults(folder.value(), std::make_shared<PosixPropertyLists>()).object("crash");
}

std::string CrashTest::storedReason() const {
    const auto value = stored();
    if (!value) return "nothing";
    return *value->as<PropertyList::Dictionary>()->at("crashreason").as<std::string>();
}

std::vector<json> CrashTest::records() const {
    std::vector<json> parsed;
    const std::filesystem::path library = root_ / "data/Tallyfoot/Shop";
    if (!std::filesystem::exists(library)) return parsed;
    for (const auto& file : std::filesystem::recursive_directory_iterator(library)) {
        if (file.path().extension() != ".log") continue;
        const auto text = readFile(file.path());
        for (std::size_t begin = 0; begin < text.size();) {
            const auto end = text.find("jsonsplit", begin);
            parsed.push_back(json::parse(text.substr(begin, end - begin)));
            begin = end + 9;
        }
    }
    return parsed;
}

std::vector<json> CrashTest::crashRecords() const {
    auto all = records();
    std::erase_if(all, [](const json& record) { return record["evtType"] != "crash"; });
    return all;
}

std::vector<std::string> CrashTest::told() {
    start();
    std::vector<std::string> reasons;
    for (const auto& record : crashRecords()) reasons.push_back(record["crashreason"]);
    return reasons;
}

} // namespace tallyfoot::testing
