#pragma once

#include <span>
#include <string_view>
#include <utility>

namespace tallyfoot {

// A key of the user defaults, prepared so that the hook of a fatal signal can store a dictionary
// from text to text under it. Stands for the user defaults' own write, which may need a lock that
// the crashing thread holds.
class SignalSafeStore {
public:
    using Text = std::pair<std::string_view, std::string_view>; // key and value

    virtual ~SignalSafeStore() = default;

    // Replaces the key's value by plain system calls alone: no memory, no lock, little stack. The
    // keys must differ. What is no character of a text file is replaced by U+FFFD; a text beyond 2 MiB
    // keeps its beginning. False when the disk refused; the former value stays then.
    virtual bool store(std::span<const Text> texts) noexcept = 0;
};

} // namespace tallyfoot
