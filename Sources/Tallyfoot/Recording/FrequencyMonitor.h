#pragma once

#include "Tallyfoot/Platform/Clock.h"
#include "Tallyfoot/Platform/DebugConsole.h"
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
    // A period that had already ended when the monitor started is told to the trigger set here.
    void setTriggerUpload(std::function<void()> trigger);
    // No tick begins after it. A monitor that is replaced is stopped, or its timers would live on.
    void stop();

    void setDebugTimerEnabled(bool isEnabled); // the countdown on the console; off

private:
    // (the implementer of this room shapes what follows)
};

} // namespace tallyfoot
