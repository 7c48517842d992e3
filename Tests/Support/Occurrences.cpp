#include "Support/Occurrences.h"

#include <chrono>

namespace tallyfoot::testing {

void Occurrences::add() {
    const std::lock_guard lock(mutex_);
    ++count_;
    changed_.notify_all();
}

int Occurrences::count() const {
    const std::lock_guard lock(mutex_);
    return count_;
}

bool Occurrences::waitFor(int count) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(60), [&] { return count_ >= count; });
}

} // namespace tallyfoot::testing
