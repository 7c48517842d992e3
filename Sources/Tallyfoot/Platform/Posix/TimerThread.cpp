#include "Tallyfoot/Platform/Posix/TimerThread.h"

#include "Tallyfoot/Platform/Posix/DetachedThread.h"

namespace tallyfoot {

TimerThread& TimerThread::shared() {
    static auto& thread = *new TimerThread; // never released: its thread runs until the process ends
    return thread;
}

AlarmKey TimerThread::set(Instant time, std::shared_ptr<Alarm> alarm) {
    MutexLock lock(mutex_);
    // Without a thread nothing rings; the next timer that is set tries again.
    if (!hasThread_) hasThread_ = startDetachedThread("Tallyfoot timer", [this] { run(); });
    const auto [place, isNew] = alarms_.emplace(AlarmKey{time, ++counter_}, std::move(alarm));
    if (place == alarms_.begin()) changed_.notifyOne();
    return place->first;
}

void TimerThread::remove(const AlarmKey& key) {
    Alarms::node_type removed; // released after the lock
    MutexLock lock(mutex_);
    removed = alarms_.extract(key);
}

void TimerThread::run() {
    for (;;)
        for (const auto& [key, alarm] : takeDue()) alarm->ring(key);
}

TimerThread::Alarms TimerThread::takeDue() {
    Alarms due;
    MutexLock lock(mutex_);
    for (;;) {
        if (alarms_.empty()) {
            changed_.wait(mutex_);
        } else if (const auto first = alarms_.begin()->first.first; first > now()) {
            changed_.waitUntil(mutex_, first);
        } else {
            const auto time = now();
            while (!alarms_.empty() && alarms_.begin()->first.first <= time)
                due.insert(alarms_.extract(alarms_.begin()));
            return due;
        }
    }
}

} // namespace tallyfoot
