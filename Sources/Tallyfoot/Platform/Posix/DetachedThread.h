#pragma once

#include <functional>
#include <string>

namespace tallyfoot {

// Starts a thread of the library's own: named after the label, never joined, and deaf to signals, so
// that the host's handlers never run on it; a crash of its own is still heard. False when the system
// has no thread to give.
[[nodiscard]] bool startDetachedThread(const std::string& label, std::function<void()> body);

} // namespace tallyfoot
