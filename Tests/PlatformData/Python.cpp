#include "PlatformData/Python.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>

namespace tallyfoot::testing {

namespace {

// For the shell, with its own quotes taken out of force.
std::string quoted(const std::string& text) {
    std::string all = "'";
    for (const char character : text) all += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return all + "'";
}

} // namespace

bool isPythonAvailable() { return std::system("python3 -c 'import plistlib; plistlib.UID' 2>/dev/null") == 0; }

std::string python(const std::string& program, const std::string& argument) {
    const auto command = "python3 -c " + quoted("import plistlib, sys\n" + program) + " " + quoted(argument);
    std::FILE* const output = ::popen(command.c_str(), "r");
    if (output == nullptr) {
        ADD_FAILURE() << "python3 does not start";
        return {};
    }
    std::string text;
    std::array<char, 4096> buffer{};
    for (std::size_t count = 0; (count = std::fread(buffer.data(), 1, buffer.size(), output)) > 0;)
        text.append(buffer.data(), count);
    EXPECT_EQ(::pclose(output), 0) << text;
    return text;
}

} // namespace tallyfoot::testing
