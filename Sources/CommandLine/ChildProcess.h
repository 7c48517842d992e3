#pragma once

#include "Tallyfoot/Platform/Result.h"

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot::commandline {

// A program that this one started: its standard input and output are pipes to here, its standard error
// is ours. It dies with this process, and when the object goes. Not for several threads at once.
class ChildProcess {
public:
    // `arguments` begin with the program's path. The environment is ours with `variables` set; an
    // empty value unsets one.
    static Result<ChildProcess> start(const std::vector<std::string>& arguments,
                                      const std::map<std::string, std::string>& variables = {});
    ~ChildProcess(); // kills what still runs
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept; // kills what this one was

    pid_t identifier() const noexcept { return identifier_; }

    // The next line of its output, without the line feed. Nothing at the deadline and at the end.
    std::optional<std::string> readLine(std::chrono::milliseconds patience);
    bool hasEnded() const noexcept { return outputEnded_; } // its output has, and all of it was read
    void writeLine(std::string_view line);
    void closeInput();

    void signal(int number);
    // Its exit status; 128 and the signal's number when one ended it. Nothing if it runs on.
    std::optional<int> wait(std::chrono::milliseconds patience);

private:
    ChildProcess(pid_t identifier, int input, int output) noexcept
        : identifier_(identifier), input_(input), output_(output) {}
    std::optional<std::string> takeLine();

    pid_t identifier_;
    int input_;
    int output_;
    std::string pending_; // read, and not yet a whole line
    bool outputEnded_ = false;
    std::optional<int> status_;
};

} // namespace tallyfoot::commandline
