#pragma once

#include "Tallyfoot/Platform/Mutex.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace tallyfoot {

// A text that threads replace while the process is well, and that the hook of a fatal signal reads
// at any instant, in the middle of a replacement too.
class SignalSafeText {
public:
    explicit SignalSafeText(std::string_view text = {});
    ~SignalSafeText();
    SignalSafeText(const SignalSafeText&) = delete;
    SignalSafeText& operator=(const SignalSafeText&) = delete;

    // Setting the text that is there already costs a comparison of hashes: it may be done for every event.
    void set(std::string_view text);

    // For a process that ends: no memory, no lock. From here on nothing that was set is released, so
    // that the text stays readable while other threads go on.
    std::string_view readForever() noexcept;

private:
    std::atomic<std::size_t> hash_;
    std::atomic<const std::string*> current_;
    std::atomic<bool> isRead_{false};
    Mutex mutex_; // one replacement at a time; never taken by a reader
};

} // namespace tallyfoot
