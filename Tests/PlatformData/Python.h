#pragma once

#include <string>

namespace tallyfoot::testing {

// Python's plistlib: property lists read and written by somebody else.
bool isPythonAvailable();

// What the program prints. It may use plistlib and find `argument` in sys.argv[1]. Fails the test
// when the program does.
std::string python(const std::string& program, const std::string& argument);

} // namespace tallyfoot::testing
