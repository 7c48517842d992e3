#include "Tallyfoot/Platform/SignalSafeText.h"

#include <functional>

namespace tallyfoot {

SignalSafeText::SignalSafeText(std::string_view text)
    : hash_(std::hash<std::string_view>()(text)), current_(new std::string(text)) {}

SignalSafeText::~SignalSafeText() { delete current_.load(); }

void SignalSafeText::set(std::string_view text) {
    const auto hash = std::hash<std::string_view>()(text);
    if (hash == hash_.load(std::memory_order_relaxed)) return;
    auto next = std::make_unique<const std::string>(text);
    MutexLock lock(mutex_);
    hash_.store(hash, std::memory_order_relaxed);
    std::unique_ptr<const std::string> former(current_.exchange(next.release()));
    // A reader says so before it looks: where this does not see it, it sees the new text.
    if (isRead_.load()) (void)former.release();
}

std::string_view SignalSafeText::readForever() noexcept {
    isRead_.store(true);
    return *current_.load();
}

} // namespace tallyfoot
