#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tallyfoot::testing {

// A way to crash, and what it is told as.
struct Fault {
    std::string name;
    int signal;
    std::function<void()> happen;
};

// Each of the six signals, sent to the thread itself.
std::vector<Fault> raisedFaults();
// The same six as a processor or a system raises them.
std::vector<Fault> realFaults();

void writeToForbiddenMemory();
void useUpTheStack();

} // namespace tallyfoot::testing
