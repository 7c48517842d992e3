#pragma once

#include "Tallyfoot/Platform/Dispatch.h"
#include "Tallyfoot/Platform/Mutex.h"
#include "Tallyfoot/Recording/Timing/RepeaterInterval.h"

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

    // Not started. Without a queue it makes its own, labelled "com.repeat.queue".
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

    bool start();  // false when it runs already; a finished one starts over
    bool pause();  // false when it is paused or finished
    void reset(std::optional<Interval> interval, bool restart);
    void fire(bool andPause); // one tick at once, on the caller's thread

private:
    // (the implementer of this room shapes what follows)
};

std::string_view description(Repeater::State state) noexcept;
constexpr bool isRunning(Repeater::State state) noexcept {
    return state == Repeater::State::running || state == Repeater::State::executing;
}
constexpr bool isExecuting(Repeater::State state) noexcept { return state == Repeater::State::executing; }
constexpr bool isFinished(Repeater::State state) noexcept { return state == Repeater::State::finished; }

} // namespace tallyfoot
