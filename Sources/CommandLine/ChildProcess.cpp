#include "CommandLine/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

extern char** environ;

namespace tallyfoot::commandline {

namespace {

using Clock = std::chrono::steady_clock;

int remaining(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

std::vector<std::string> environment(const std::map<std::string, std::string>& variables) {
    std::vector<std::string> all;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text(*entry);
        if (!variables.contains(std::string(text.substr(0, text.find('='))))) all.emplace_back(text);
    }
    for (const auto& [name, value] : variables) {
        if (!value.empty()) all.emplace_back(name).append("=").append(value);
    }
    return all;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> all;
    all.reserve(texts.size() + 1);
    for (auto& text : texts) all.push_back(text.data());
    all.push_back(nullptr);
    return all;
}

// Between fork and exec: only what is safe after a fork of a process with several threads.
[[noreturn]] void become(char* const* arguments, char* const* variables, int input, int output, pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(127); // it went before the line above
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    constexpr unsigned closeOnExec = 1U << 2U; // CLOSE_RANGE_CLOEXEC
    ::syscall(SYS_close_range, 3U, ~0U, closeOnExec);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    std::signal(SIGPIPE, SIG_DFL);
    ::execve(arguments[0], arguments, variables);
    ::_exit(127);
}

} // namespace

Result<ChildProcess> ChildProcess::start(const std::vector<std::string>& arguments,
                                         const std::map<std::string, std::string>& variables) {
    // Everything the child needs is made before the fork: it may not allocate after it.
    auto argumentTexts = arguments;
    auto variableTexts = environment(variables);
    const auto argumentList = pointers(argumentTexts);
    const auto variableList = pointers(variableTexts);
    std::array<int, 2> input{-1, -1};
    std::array<int, 2> output{-1, -1};
    if (::pipe2(input.data(), O_CLOEXEC) != 0) return Error{std::strerror(errno)};
    if (::pipe2(output.data(), O_CLOEXEC) != 0) {
        ::close(input[0]);
        ::close(input[1]);
        return Error{std::strerror(errno)};
    }
    const pid_t parent = ::getpid();
    const pid_t identifier = ::fork();
    if (identifier == 0) become(argumentList.data(), variableList.data(), input[0], output[1], parent);
    const std::string failure = identifier < 0 ? std::strerror(errno) : "";
    ::close(input[0]);
    ::close(output[1]);
    ChildProcess child(identifier, input[1], output[0]);
    if (identifier < 0) return Error{failure};
    return child;
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : identifier_(std::exchange(other.identifier_, -1)), input_(std::exchange(other.input_, -1)),
      output_(std::exchange(other.output_, -1)), pending_(std::move(other.pending_)), outputEnded_(other.outputEnded_),
      status_(other.status_) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    ChildProcess taken(std::move(other));
    std::swap(identifier_, taken.identifier_);
    std::swap(input_, taken.input_);
    std::swap(output_, taken.output_);
    std::swap(pending_, taken.pending_);
    std::swap(outputEnded_, taken.outputEnded_);
    std::swap(status_, taken.status_);
    return *this;
}

ChildProcess::~ChildProcess() {
    closeInput();
    if (output_ >= 0) ::close(output_);
    if (identifier_ <= 0 || status_) return;
    ::kill(identifier_, SIGKILL);
    while (::waitpid(identifier_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

std::optional<std::string> ChildProcess::takeLine() {
    const auto end = pending_.find('\n');
    if (end == std::string::npos) return std::nullopt;
    auto line = pending_.substr(0, end);
    pending_.erase(0, end + 1);
    return line;
}

std::optional<std::string> ChildProcess::readLine(std::chrono::milliseconds patience) {
    const auto deadline = Clock::now() + patience;
    for (;;) {
        if (auto line = takeLine()) return line;
        if (outputEnded_) return std::nullopt;
        pollfd descriptor{output_, POLLIN, 0};
        const int ready = ::poll(&descriptor, 1, remaining(deadline));
        if (ready == 0) return std::nullopt;
        if (ready < 0) continue; // interrupted
        std::array<char, 65536> buffer{};
        const auto count = ::read(output_, buffer.data(), buffer.size());
        if (count > 0) {
            pending_.append(buffer.data(), static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            outputEnded_ = true;
            if (!pending_.empty()) return std::exchange(pending_, {});
        }
    }
}

void ChildProcess::writeLine(std::string_view line) {
    const std::string text = std::string(line) + "\n";
    std::size_t written = 0;
    while (input_ >= 0 && written < text.size()) {
        const auto count = ::write(input_, text.data() + written, text.size() - written);
        if (count > 0) {
            written += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            return closeInput(); // it reads no more
        }
    }
}

void ChildProcess::closeInput() {
    if (input_ >= 0) ::close(std::exchange(input_, -1));
}

void ChildProcess::signal(int number) {
    if (identifier_ > 0 && !status_) ::kill(identifier_, number);
}

std::optional<int> ChildProcess::wait(std::chrono::milliseconds patience) {
    if (status_) return status_;
    // A descriptor of the process tells its end, so that nothing is asked again and again.
    const int descriptor = static_cast<int>(::syscall(SYS_pidfd_open, identifier_, 0));
    pollfd ended{descriptor, POLLIN, 0};
    const auto deadline = Clock::now() + patience;
    int ready = 0;
    do {
        ready = ::poll(&ended, 1, remaining(deadline));
    } while (ready < 0 && errno == EINTR);
    if (descriptor >= 0) ::close(descriptor);
    int status = 0;
    if (::waitpid(identifier_, &status, WNOHANG) != identifier_) return std::nullopt;
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return status_;
}

} // namespace tallyfoot::commandline
