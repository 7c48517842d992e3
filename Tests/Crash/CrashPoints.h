#pragma once

#include <functional>

namespace tallyfoot::testing {

// Every lock that is taken and every system call on a file is a point at which this process can be made
// to crash: inside, with the lock held, before the call and after it.
void crashAtPoint(long number); // counted from here on, on all threads; 1 is the next one
long pointsSince();             // how many have come since

} // namespace tallyfoot::testing
