#pragma once

#include "Tallyfoot/Platform/Mutex.h"

#include <utility>

namespace tallyfoot {

// A value that several threads share: reachable only while its lock is held.
// The block given to `read` or `modify` must not call into anything that may block or call back.
template <class Value>
class Exclusive {
public:
    Exclusive() = default;
    explicit Exclusive(Value value) : value_(std::move(value)) {}

    template <class Block>
    decltype(auto) read(Block&& block) const {
        MutexLock lock(mutex_);
        return std::forward<Block>(block)(std::as_const(value_));
    }

    template <class Block>
    decltype(auto) modify(Block&& block) {
        MutexLock lock(mutex_);
        return std::forward<Block>(block)(value_);
    }

    Value copy() const {
        MutexLock lock(mutex_);
        return value_;
    }

    // The former value is released after the lock, so that its destructor may do as it likes.
    Value exchange(Value value) {
        MutexLock lock(mutex_);
        return std::exchange(value_, std::move(value));
    }

private:
    mutable Mutex mutex_;
    Value value_ TALLYFOOT_GUARDED_BY(mutex_){};
};

} // namespace tallyfoot
