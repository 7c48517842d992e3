#pragma once

#include "Tallyfoot/Platform/Mutex.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace tallyfoot {

// A condition variable over Mutex. Waits may end early; the caller asks its condition again.
class Condition {
public:
    void wait(Mutex& mutex) TALLYFOOT_REQUIRES(mutex) {
        std::unique_lock lock(mutex.native(), std::adopt_lock);
        changed_.wait(lock);
        lock.release();
    }
    void waitUntil(Mutex& mutex, std::chrono::steady_clock::time_point time) TALLYFOOT_REQUIRES(mutex) {
        std::unique_lock lock(mutex.native(), std::adopt_lock);
        changed_.wait_until(lock, time);
        lock.release();
    }
    void notifyOne() noexcept { changed_.notify_one(); }
    void notifyAll() noexcept { changed_.notify_all(); }

private:
    std::condition_variable changed_;
};

} // namespace tallyfoot
