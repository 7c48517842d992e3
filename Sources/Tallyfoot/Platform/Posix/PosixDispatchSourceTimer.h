#pragma once

#include "Tallyfoot/Platform/DispatchQueue.h"
#include "Tallyfoot/Platform/DispatchSourceTimer.h"
#include "Tallyfoot/Platform/Posix/AlarmClock.h"

namespace tallyfoot {

// Hands each tick to its queue when the alarm clock rings. The next alarm is set when a tick starts,
// so that a busy queue meets one tick for all that it missed. Leeway is not made use of.
class PosixDispatchSourceTimer final : public DispatchSourceTimer {
public:
    PosixDispatchSourceTimer(std::shared_ptr<DispatchQueue> queue, AlarmClock& clock);
    ~PosixDispatchSourceTimer() override;

    void schedule(std::chrono::nanoseconds deadline, std::optional<std::chrono::nanoseconds> repeating,
                  std::chrono::nanoseconds leeway) override;
    void setEventHandler(std::function<void()> handler) override;
    void resume() override;
    void suspend() override;
    void cancel() override;

private:
    class State; // outlives the timer while a tick is on its way
    std::shared_ptr<State> state_;
};

} // namespace tallyfoot
