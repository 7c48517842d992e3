#pragma once

#include <string_view>

namespace tallyfoot::testing {

// Every lock that is taken and every system call on a file is a point at which this process can be made
// to crash: inside, with the lock held, before the call and after it. Each is of a kind: "lock", "open",
// "write", "console" (a write to standard output), "close", "rename", "unlink" or "mkdir".

// Counted from here on, on all threads; 1 is the next one, and 0 none. "" counts all kinds.
void crashAtPoint(long number, void (*crash)(), std::string_view kind = {});
long pointsSince(); // how many have come since

// Ways to crash there.
void sendFault();  // a signal sent to the thread: one that blocks it goes on
void killAtOnce(); // the process, without a chance to do anything

// From here on each look at the clock takes a while, during which others come as far.
void slowDownTheClock();

} // namespace tallyfoot::testing
