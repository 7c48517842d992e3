#pragma once

#include "Tallyfoot/Platform/ThreadSafety.h"

#include <mutex>

namespace tallyfoot {

// std::mutex as a capability that clang's analysis follows. `native` is for condition variables.
class TALLYFOOT_CAPABILITY("mutex") Mutex {
public:
    void lock() TALLYFOOT_ACQUIRE() { mutex_.lock(); }
    void unlock() TALLYFOOT_RELEASE() { mutex_.unlock(); }
    bool try_lock() TALLYFOOT_TRY_ACQUIRE(true) { return mutex_.try_lock(); }
    std::mutex& native() noexcept { return mutex_; }

private:
    std::mutex mutex_;
};

class TALLYFOOT_SCOPED_CAPABILITY MutexLock {
public:
    explicit MutexLock(Mutex& mutex) TALLYFOOT_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~MutexLock() TALLYFOOT_RELEASE() { mutex_.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    Mutex& mutex_;
};

} // namespace tallyfoot
