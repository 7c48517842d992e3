#pragma once

#include "Tallyfoot/Platform/Posix/AlarmClock.h"
#include "Tallyfoot/Platform/Posix/Condition.h"

#include <map>

namespace tallyfoot {

// The one thread of the process that waits for all timers, started by the first of them.
class TimerThread final : public AlarmClock {
public:
    static TimerThread& shared();

    Instant now() const override { return std::chrono::steady_clock::now(); }
    AlarmKey set(Instant time, std::shared_ptr<Alarm> alarm) override;
    void remove(const AlarmKey& key) override;

private:
    using Alarms = std::map<AlarmKey, std::shared_ptr<Alarm>>;

    TimerThread() = default;
    [[noreturn]] void run();
    Alarms takeDue();

    Mutex mutex_;
    Condition changed_;
    Alarms alarms_ TALLYFOOT_GUARDED_BY(mutex_);
    std::uint64_t counter_ TALLYFOOT_GUARDED_BY(mutex_) = 0;
    bool hasThread_ TALLYFOOT_GUARDED_BY(mutex_) = false;
};

} // namespace tallyfoot
