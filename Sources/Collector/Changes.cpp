#include "Collector/Changes.h"

namespace tallyfoot::collector {

std::uint64_t Changes::count() {
    MutexLock lock(mutex_);
    return count_;
}

void Changes::signal() {
    MutexLock lock(mutex_);
    ++count_;
    changed_.notify_all();
}

void Changes::stop() {
    MutexLock lock(mutex_);
    stopped_ = true;
    changed_.notify_all();
}

bool Changes::waitPast(std::uint64_t count, Deadline deadline) {
    MutexLock lock(mutex_);
    while (count_ <= count && !stopped_) {
        if (changed_.wait_until(mutex_, deadline) == std::cv_status::timeout) break;
    }
    return count_ > count && !stopped_;
}

void Changes::waitUntil(Deadline deadline) {
    MutexLock lock(mutex_);
    while (!stopped_) {
        if (changed_.wait_until(mutex_, deadline) == std::cv_status::timeout) return;
    }
}

} // namespace tallyfoot::collector
