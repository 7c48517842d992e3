// Every test program's entry. With --fork-each, each test runs in a child of this process: it starts from the same
// fresh state as in a process of its own, without loading the program again, which under a sanitizer takes many
// times as long as most tests. What a test prints is shown where it is skipped or fails; then it runs again in a
// process of its own, with the names of functions and lines, which are left out of the many for their cost.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr int patience = 300'000; // milliseconds for one test

// Removed from the arguments, so that a death test that starts the program anew runs only itself.
bool takeForkEach(int& count, char** arguments) {
    if (count < 2 || std::string(arguments[1]) != "--fork-each") return false;
    for (int index = 1; index < count; ++index) arguments[index] = arguments[index + 1];
    --count;
    return true;
}

std::vector<std::string> testNames() {
    std::vector<std::string> names;
    const auto& all = *::testing::UnitTest::GetInstance();
    for (int suite = 0; suite < all.total_test_suite_count(); ++suite) {
        const auto& tests = *all.GetTestSuite(suite);
        for (int test = 0; test < tests.total_test_count(); ++test)
            names.push_back(std::string(tests.name()) + "." + tests.GetTestInfo(test)->name());
    }
    return names;
}

std::string textOf(int file) {
    std::string text;
    std::array<char, 4096> block;
    ssize_t count = 0;
    while ((count = ::pread(file, block.data(), block.size(), static_cast<off_t>(text.size()))) > 0)
        text.append(block.data(), static_cast<std::size_t>(count));
    return text;
}

// As waitpid tells it; 0 is success.
int statusOf(pid_t child) {
    const int process = static_cast<int>(::syscall(SYS_pidfd_open, child, 0));
    pollfd end{.fd = process, .events = POLLIN, .revents = 0};
    if (::poll(&end, 1, patience) == 0) ::kill(child, SIGKILL);
    ::close(process);
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

struct Run {
    int status;
    std::string output;
};

Run inChild(const std::function<int()>& work) {
    std::fflush(nullptr);
    const int output = ::memfd_create("output", MFD_CLOEXEC);
    const auto child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::dup2(output, STDOUT_FILENO);
        ::dup2(output, STDERR_FILENO);
        std::exit(work()); // NOLINT(concurrency-mt-unsafe): a child has one thread, and what else it started has ended
    }
    const int status = child > 0 ? statusOf(child) : -1;
    auto text = textOf(output);
    ::close(output);
    return {status, std::move(text)};
}

int runAlone(const std::string& name) {
    ::testing::GTEST_FLAG(filter) = name;
    return RUN_ALL_TESTS();
}

int runAnew(const char* program, const std::string& name) {
    for (const auto* variable : {"ASAN_OPTIONS", "TSAN_OPTIONS"}) {
        const char* options = std::getenv(variable);                                              // NOLINT: one thread
        ::setenv(variable, (std::string(options ? options : "") + ":symbolize=1").c_str(), true); // NOLINT: one thread
    }
    ::execl("/proc/self/exe", program, ("--gtest_filter=" + name).c_str(), nullptr);
    return 1;
}

} // namespace

int main(int count, char** arguments) {
    const bool forkEach = takeForkEach(count, arguments);
    ::testing::InitGoogleMock(&count, arguments);
    if (!forkEach) return RUN_ALL_TESTS();

    int failures = 0;
    const auto names = testNames();
    for (const auto& name : names) {
        const auto run = inChild([&] { return runAlone(name); });
        if (run.output.find("[  SKIPPED ]") != std::string::npos) std::printf("%s\n", run.output.c_str());
        if (run.status == 0) continue;
        ++failures;
        std::printf("%s\n%s ended with status 0x%x. Once more:\n\n", run.output.c_str(), name.c_str(),
                    static_cast<unsigned>(run.status));
        const auto again = inChild([&] { return runAnew(arguments[0], name); });
        std::printf("%s\n%s ended with status 0x%x.\n\n", again.output.c_str(), name.c_str(),
                    static_cast<unsigned>(again.status));
    }
    std::printf("%zu tests, %d failed\n", names.size(), failures);
    return failures == 0 ? 0 : 1;
}
