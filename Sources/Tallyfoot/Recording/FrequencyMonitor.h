#pragma once

#include "Tallyfoot/Platform/Clock.h"
#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Platform/Dispatch.h"
#include "Tallyfoot/Platform/Mutex.h"
#include "Tallyfoot/Platform/UserDefaults.h"
#include "Tallyfoot/Recording/Timing/Debouncer.h"
#include "Tallyfoot/Recording/Timing/Repeater.h"

#include <functional>
#include <memory>

namespace tallyfoot {

// The trigger by time: at the end of each period, if anything was counted. The time of the last
// upload is kept in the store, so that after a restart only the rest of the period is waited for.
// Any thread; triggerUpload is called on a timer's queue.
class FrequencyMonitor : public std::enable_shared_from_this<FrequencyMonitor> {
public:
    struct Collaborators {
        Dispatch& dispatch;
        const Clock& clock;
        UserDefaults& userDefaults;
        DebugConsole console;
    };

    static std::shared_ptr<FrequencyMonitor> make(Collaborators collaborators, Repeater::Interval frequency);
    ~FrequencyMonitor();

    void start();   // once, right after making it
    void restart(); // a full period from now
    // A period that ended before a trigger was set is told to it at once, on the caller's thread.
    void setTriggerUpload(std::function<void()> trigger);
    // No tick begins after it, and a restart does nothing. Releasing the monitor stops it, too, but
    // a tick under way may still hold it: whoever replaces a monitor stops it.
    void stop();

    void setDebugTimerEnabled(bool isEnabled); // the countdown on the console; off

private:
    FrequencyMonitor(Collaborators collaborators, Repeater::Interval frequency);

    void tick();
    void waitForRest(double seconds);
    void countDown(double seconds);
    std::function<void()> weakTick();

    const Collaborators collaborators_;
    const Repeater::Interval frequency_;

    Mutex mutex_;
    std::shared_ptr<Repeater> repeater_ TALLYFOOT_GUARDED_BY(mutex_);   // the rest of a period begun earlier
    std::shared_ptr<Debouncer> debouncer_ TALLYFOOT_GUARDED_BY(mutex_); // a full period
    std::shared_ptr<Repeater> debugTimer_ TALLYFOOT_GUARDED_BY(mutex_); // the countdown
    std::shared_ptr<std::function<void()>> triggerUpload_ TALLYFOOT_GUARDED_BY(mutex_);
    bool isDebugTimerEnabled_ TALLYFOOT_GUARDED_BY(mutex_) = false;
    bool isStopped_ TALLYFOOT_GUARDED_BY(mutex_) = false;
    bool isTriggerOwed_ TALLYFOOT_GUARDED_BY(mutex_) = false; // a period ended before a trigger was set
};

} // namespace tallyfoot
