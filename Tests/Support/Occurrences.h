#pragma once

#include <condition_variable>
#include <mutex>

namespace tallyfoot::testing {

// How often something happened, for threads to wait on.
class Occurrences {
public:
    void add();
    int count() const;
    bool waitFor(int count) const; // false when it takes longer than anybody would wait

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    int count_ = 0;
};

} // namespace tallyfoot::testing
