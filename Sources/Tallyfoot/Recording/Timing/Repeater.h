#pragma once

#include "Tallyfoot/Platform/Dispatch.h"
#include "Tallyfoot/Platform/Mutex.h"
#include "Tallyfoot/Recording/Timing/ObserverIDs.h"
#include "Tallyfoot/Recording/Timing/RepeaterInterval.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string_view>

namespace tallyfoot {

// A timer that calls its observers on a queue: once, a number of times, or for ever. Any thread;
// observers and the state listener are called with nothing held, so each may do anything to the
// repeater, re-arming and releasing it included.
class Repeater : public std::enable_shared_from_this<Repeater> {
public:
    using Interval = RepeaterInterval;

    enum class State { paused, running, executing, finished };

    class Mode {
    public:
        static Mode finite(std::int64_t count) noexcept { return Mode(Kind::finite, count); }
        static Mode infinite() noexcept { return Mode(Kind::infinite, 0); }
        static Mode once() noexcept { return Mode(Kind::once, 0); }

        bool isInfinite() const noexcept { return kind_ == Kind::infinite; }
        bool isOnce() const noexcept { return kind_ == Kind::once; }

        std::optional<std::int64_t> countIterations() const noexcept {
            return kind_ == Kind::finite ? std::optional(count_) : std::nullopt;
        }

    private:
        enum class Kind { finite, infinite, once };
        Mode(Kind kind, std::int64_t count) noexcept : kind_(kind), count_(count) {}
        Kind kind_;
        std::int64_t count_;
    };

    using Observer = std::function<void(Repeater&)>;
    using ObserverID = std::uint64_t;
    using StateListener = std::function<void(Repeater&, State)>;

    // Not started. Without a queue it makes its own, labelled "com.repeat.queue"; without an observer
    // it ticks all the same.
    static std::shared_ptr<Repeater> make(Dispatch& dispatch, Interval interval, Mode mode,
                                          DispatchTimeInterval tolerance, std::shared_ptr<DispatchQueue> queue,
                                          Observer observer);
    // Started at once.
    static std::shared_ptr<Repeater> once(Dispatch& dispatch, Interval after, std::shared_ptr<DispatchQueue> queue,
                                          Observer observer);
    static std::shared_ptr<Repeater> every(Dispatch& dispatch, Interval interval, std::optional<std::int64_t> count,
                                           std::shared_ptr<DispatchQueue> queue, Observer observer);
    ~Repeater();

    State state() const;
    std::optional<std::int64_t> remainingIterations() const;
    void setOnStateChanged(StateListener listener);

    ObserverID observe(Observer observer); // 1, 2, …; after the largest id comes 0
    void remove(ObserverID observer);
    void removeAllObservers(bool thenStop); // stopping pauses, it does not finish

    bool start(); // false when it runs already; a finished one starts over
    bool pause(); // false when it is paused or finished
    void reset(std::optional<Interval> interval, bool restart);
    void fire(bool andPause); // one tick at once, on the caller's thread

private:
    Repeater(Dispatch& dispatch, Interval interval, Mode mode, DispatchTimeInterval tolerance,
             std::shared_ptr<DispatchQueue> queue);

    void tick(std::optional<std::uint64_t> source); // none: by hand
    void announceRunning();
    void notify(State state);

    // The platform's calls on the timer neither wait nor call out, so they are made under the lock:
    // only so do its suspensions stay balanced whoever calls when.
    bool begin(std::optional<std::uint64_t> source) TALLYFOOT_REQUIRES(mutex_);
    bool finish() TALLYFOOT_REQUIRES(mutex_);
    bool change(State expected, State state) TALLYFOOT_REQUIRES(mutex_);
    void buildTimer() TALLYFOOT_REQUIRES(mutex_);
    void destroyTimer() TALLYFOOT_REQUIRES(mutex_);
    void schedule(std::chrono::nanoseconds deadline) TALLYFOOT_REQUIRES(mutex_);
    void suspendTimer() TALLYFOOT_REQUIRES(mutex_);
    void resumeTimer() TALLYFOOT_REQUIRES(mutex_);

    Dispatch& dispatch_;
    const Mode mode_;
    const DispatchTimeInterval tolerance_;
    const std::shared_ptr<DispatchQueue> queue_;

    mutable Mutex mutex_;
    State state_ TALLYFOOT_GUARDED_BY(mutex_) = State::paused;
    std::shared_ptr<StateListener> onStateChanged_ TALLYFOOT_GUARDED_BY(mutex_);
    std::map<ObserverID, std::shared_ptr<Observer>> observers_ TALLYFOOT_GUARDED_BY(mutex_);
    ObserverIDs nextObserverID_ TALLYFOOT_GUARDED_BY(mutex_);
    std::optional<std::int64_t> remainingIterations_ TALLYFOOT_GUARDED_BY(mutex_);
    Interval interval_ TALLYFOOT_GUARDED_BY(mutex_);

    std::unique_ptr<DispatchSourceTimer> timer_ TALLYFOOT_GUARDED_BY(mutex_);
    bool isSuspended_ TALLYFOOT_GUARDED_BY(mutex_) = true;
    std::uint64_t timerNumber_ TALLYFOOT_GUARDED_BY(mutex_) = 0; // tells a late tick of a former timer
    // When the timer has nothing more to give, this is what the next resume schedules it for.
    std::optional<std::chrono::nanoseconds> nextDeadline_ TALLYFOOT_GUARDED_BY(mutex_);
};

std::string_view description(Repeater::State state) noexcept;

constexpr bool isRunning(Repeater::State state) noexcept {
    return state == Repeater::State::running || state == Repeater::State::executing;
}
constexpr bool isExecuting(Repeater::State state) noexcept { return state == Repeater::State::executing; }
constexpr bool isFinished(Repeater::State state) noexcept { return state == Repeater::State::finished; }

} // namespace tallyfoot
