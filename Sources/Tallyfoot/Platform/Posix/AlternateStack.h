#pragma once

namespace tallyfoot {

// A stack for signal handlers, for threads whose own may be used up. It belongs to its thread and goes
// with it. A thread that has one already, of a useful size, keeps that. Where the system gives no
// room the thread goes without: an overflow of its stack then ends the process unheard.
void ensureAlternateStack() noexcept;

} // namespace tallyfoot
