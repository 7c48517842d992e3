#include "Tallyfoot/Recording/FrequencyMonitor.h"

#include "Tallyfoot/Platform/FatalError.h"
#include "Tallyfoot/Recording/StoreKeys.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

namespace tallyfoot {

namespace {

constexpr auto noTolerance = DispatchTimeInterval::nanoseconds(0);
constexpr double twoToThe63 = 9'223'372'036'854'775'808.0;

// Whether an interval holds so many seconds, which it counts in milliseconds.
bool isInterval(double seconds) {
    const double milliseconds = seconds * 1000;
    return milliseconds >= -twoToThe63 && milliseconds < twoToThe63;
}

std::int64_t wholeSeconds(double seconds) {
    if (!(seconds >= -twoToThe63 && seconds < twoToThe63)) fatalError("a countdown from no whole number of seconds");
    return static_cast<std::int64_t>(seconds);
}

void printRest(const DebugConsole& console, std::int64_t seconds) {
    if (console.isOn()) console.print({"Uploading starts in ", std::to_string(seconds)});
}

Repeater::Observer countingDown(DebugConsole console, std::int64_t seconds) {
    return [console, seconds](Repeater&) mutable {
        if (seconds == std::numeric_limits<std::int64_t>::min()) fatalError("a countdown underflows");
        printRest(console, --seconds);
    };
}

} // namespace

std::shared_ptr<FrequencyMonitor> FrequencyMonitor::make(Collaborators collaborators, Repeater::Interval frequency) {
    return std::shared_ptr<FrequencyMonitor>(new FrequencyMonitor(collaborators, frequency));
}

FrequencyMonitor::FrequencyMonitor(Collaborators collaborators, Repeater::Interval frequency)
    : collaborators_(collaborators), frequency_(frequency) {}

FrequencyMonitor::~FrequencyMonitor() = default;

void FrequencyMonitor::start() {
    const double period = frequency_.value().timeInterval();
    const double now = timeIntervalSince1970(collaborators_.clock.now());
    const double last = collaborators_.userDefaults.real(storekeys::eventLastUpload);
    {
        auto debouncer =
            std::make_shared<Debouncer>(collaborators_.dispatch, collaborators_.console, frequency_, weakTick());
        MutexLock lock(mutex_);
        if (isStopped_) return;
        debouncer_.swap(debouncer);
    }
    // A clock that was set back makes the rest longer than a period; any other trigger's restart
    // and new time of the last upload put that right.
    const double rest = period - (now - last);
    if (last == 0 || std::isnan(rest) || (rest > 0 && !isInterval(rest))) {
        restart(); // nothing was uploaded yet, or the store holds what cannot be a time
    } else if (rest <= 0) {
        tick();
    } else {
        waitForRest(rest);
    }
}

void FrequencyMonitor::waitForRest(double seconds) {
    countDown(seconds);
    auto repeater =
        Repeater::make(collaborators_.dispatch, Repeater::Interval::seconds(seconds), Repeater::Mode::once(),
                       noTolerance, nullptr, [tick = weakTick()](Repeater&) { tick(); });
    {
        MutexLock lock(mutex_);
        if (isStopped_) return;
        repeater_ = repeater;
    }
    repeater->start();
}

void FrequencyMonitor::restart() {
    std::shared_ptr<Debouncer> debouncer;
    {
        MutexLock lock(mutex_);
        if (isStopped_) return;
        isTriggerOwed_ = false;
        debouncer = debouncer_;
    }
    if (!debouncer) fatalError("a frequency monitor is restarted before it was started");
    debouncer->call();
    countDown(frequency_.value().timeInterval());
}

void FrequencyMonitor::setTriggerUpload(std::function<void()> trigger) {
    auto set = trigger ? std::make_shared<std::function<void()>>(std::move(trigger)) : nullptr;
    auto former = set;
    bool isOwed = false;
    {
        MutexLock lock(mutex_);
        triggerUpload_.swap(former);
        isOwed = set && !isStopped_ && std::exchange(isTriggerOwed_, false);
    }
    if (isOwed) (*set)();
}

void FrequencyMonitor::stop() {
    std::shared_ptr<Repeater> repeater;
    std::shared_ptr<Debouncer> debouncer;
    std::shared_ptr<Repeater> debugTimer;
    MutexLock lock(mutex_);
    isStopped_ = true;
    repeater_.swap(repeater);
    debouncer_.swap(debouncer);
    debugTimer_.swap(debugTimer);
}

void FrequencyMonitor::setDebugTimerEnabled(bool isEnabled) {
    MutexLock lock(mutex_);
    isDebugTimerEnabled_ = isEnabled;
}

void FrequencyMonitor::tick() {
    {
        MutexLock lock(mutex_);
        if (isStopped_) return;
    }
    if (collaborators_.userDefaults.integer(storekeys::eventCount) < 1) {
        collaborators_.console.print("No events to upload. Restarting upload timer");
        restart();
        return;
    }
    std::shared_ptr<std::function<void()>> trigger;
    {
        MutexLock lock(mutex_);
        trigger = triggerUpload_;
        isTriggerOwed_ = !trigger;
    }
    if (trigger) (*trigger)();
}

void FrequencyMonitor::countDown(double seconds) {
    {
        MutexLock lock(mutex_);
        if (!isDebugTimerEnabled_) return;
    }
    const std::int64_t count = wholeSeconds(seconds);
    printRest(collaborators_.console, count);
    auto timer =
        Repeater::make(collaborators_.dispatch, Repeater::Interval::seconds(1.0), Repeater::Mode::finite(count),
                       noTolerance, nullptr, countingDown(collaborators_.console, count));
    timer->start();
    MutexLock lock(mutex_);
    if (!isStopped_) debugTimer_.swap(timer);
}

// The timers belong to the monitor, so they hold it weakly: it goes when its owner releases it,
// and its timers with it.
std::function<void()> FrequencyMonitor::weakTick() {
    return [weak = weak_from_this()] {
        if (const auto monitor = weak.lock()) monitor->tick();
    };
}

} // namespace tallyfoot
