#pragma once

#include "Tallyfoot/Platform/Dispatch.h"
#include "Tallyfoot/Platform/Exclusive.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tallyfoot::testing {

// What was asked of one timer source.
struct TimerLog {
    std::string queueLabel;
    std::chrono::nanoseconds deadline{};
    std::optional<std::chrono::nanoseconds> repeating;
    std::chrono::nanoseconds leeway{};
    std::function<void()> handler; // the last one that was set
    int schedules = 0;
    int resumes = 0;
    int suspends = 0;
    bool isCancelled = false;
    bool isReleased = false;
};

// Watches another dispatch: fails the test when a source is resumed once too often, or released
// before it was cancelled or while it is suspended. Outlives its timers. Any thread.
class SpyDispatch final : public Dispatch {
public:
    explicit SpyDispatch(Dispatch& real) : real_(real) {}

    std::shared_ptr<DispatchQueue> makeQueue(std::string label) override { return real_.makeQueue(std::move(label)); }
    std::unique_ptr<DispatchSourceTimer> makeTimerSource(std::shared_ptr<DispatchQueue> queue) override;

    std::size_t timersMade() const;
    TimerLog timer(std::size_t index) const;
    TimerLog lastTimer() const { return timer(timersMade() - 1); }

private:
    Dispatch& real_;
    Exclusive<std::vector<std::shared_ptr<Exclusive<TimerLog>>>> timers_;
};

} // namespace tallyfoot::testing
