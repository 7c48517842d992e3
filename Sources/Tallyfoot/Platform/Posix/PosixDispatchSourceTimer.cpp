#include "Tallyfoot/Platform/Posix/PosixDispatchSourceTimer.h"

#include "Tallyfoot/Platform/FatalError.h"
#include "Tallyfoot/Platform/Mutex.h"

#include <algorithm>
#include <utility>

namespace tallyfoot {

using std::chrono::nanoseconds;

class PosixDispatchSourceTimer::State : public Alarm, public std::enable_shared_from_this<State> {
public:
    State(std::shared_ptr<DispatchQueue> queue, AlarmClock& clock) : queue_(std::move(queue)), clock_(clock) {}

    void schedule(nanoseconds deadline, std::optional<nanoseconds> repeating) {
        MutexLock lock(mutex_);
        ++schedule_; // a tick of the former schedule that is on its way comes to nothing
        disarm();
        isDue_ = false;
        interval_ = repeating;
        if (interval_) interval_ = std::max(*interval_, nanoseconds(1));
        if (!isCancelled_) arm(clock_.now(), std::max(deadline, nanoseconds(0)));
    }

    void setEventHandler(std::function<void()> handler) {
        auto shared = handler ? std::make_shared<std::function<void()>>(std::move(handler)) : nullptr;
        MutexLock lock(mutex_);
        if (!isCancelled_) handler_.swap(shared); // the former one is released after the lock
    }

    void suspend() {
        MutexLock lock(mutex_);
        ++suspensions_;
    }

    void resume() {
        std::uint64_t schedule = 0;
        {
            MutexLock lock(mutex_);
            if (suspensions_ == 0) fatalError("a timer was resumed more often than it was suspended");
            if (--suspensions_ > 0 || !isDue_) return;
            isDue_ = false;
            schedule = schedule_;
        }
        post(schedule);
    }

    void cancel() {
        std::shared_ptr<std::function<void()>> handler; // released after the lock
        MutexLock lock(mutex_);
        isCancelled_ = true;
        isDue_ = false;
        disarm();
        handler.swap(handler_);
    }

    void ring(const AlarmKey& key) override {
        std::uint64_t schedule = 0;
        {
            MutexLock lock(mutex_);
            if (alarm_ != key) return;
            alarm_.reset();
            isDue_ = suspensions_ > 0;
            if (isDue_) return;
            schedule = schedule_;
        }
        post(schedule);
    }

private:
    void arm(Instant from, nanoseconds distance) TALLYFOOT_REQUIRES(mutex_) {
        if (distance >= Instant::max() - from) return; // never
        due_ = from + distance;
        alarm_ = clock_.set(due_, shared_from_this());
    }

    void disarm() TALLYFOOT_REQUIRES(mutex_) {
        if (auto alarm = std::exchange(alarm_, std::nullopt)) clock_.remove(*alarm);
    }

    void post(std::uint64_t schedule) {
        queue_->async([self = shared_from_this(), schedule] { self->tick(schedule); });
    }

    void tick(std::uint64_t schedule) {
        std::shared_ptr<std::function<void()>> handler;
        {
            MutexLock lock(mutex_);
            if (isCancelled_ || schedule != schedule_) return;
            isDue_ = suspensions_ > 0;
            if (isDue_) return;
            if (interval_) armNext();
            handler = handler_;
        }
        if (handler) (*handler)();
    }

    // The next instant of the beat that is still ahead.
    void armNext() TALLYFOOT_REQUIRES(mutex_) {
        const auto missed = std::max(clock_.now() - due_, nanoseconds(0)) / *interval_;
        arm(due_ + missed * *interval_, *interval_);
    }

    const std::shared_ptr<DispatchQueue> queue_;
    AlarmClock& clock_;

    Mutex mutex_;
    std::shared_ptr<std::function<void()>> handler_ TALLYFOOT_GUARDED_BY(mutex_);
    std::optional<AlarmKey> alarm_ TALLYFOOT_GUARDED_BY(mutex_); // the one that is set
    Instant due_ TALLYFOOT_GUARDED_BY(mutex_){};
    std::optional<nanoseconds> interval_ TALLYFOOT_GUARDED_BY(mutex_);
    std::uint64_t schedule_ TALLYFOOT_GUARDED_BY(mutex_) = 0; // counts the calls of `schedule`
    std::uint64_t suspensions_ TALLYFOOT_GUARDED_BY(mutex_) = 1;
    bool isDue_ TALLYFOOT_GUARDED_BY(mutex_) = false; // a tick waits for the resume
    bool isCancelled_ TALLYFOOT_GUARDED_BY(mutex_) = false;
};

PosixDispatchSourceTimer::PosixDispatchSourceTimer(std::shared_ptr<DispatchQueue> queue, AlarmClock& clock)
    : state_(std::make_shared<State>(std::move(queue), clock)) {}

PosixDispatchSourceTimer::~PosixDispatchSourceTimer() { state_->cancel(); }

void PosixDispatchSourceTimer::schedule(nanoseconds deadline, std::optional<nanoseconds> repeating, nanoseconds) {
    state_->schedule(deadline, repeating);
}

void PosixDispatchSourceTimer::setEventHandler(std::function<void()> handler) {
    state_->setEventHandler(std::move(handler));
}

void PosixDispatchSourceTimer::resume() { state_->resume(); }

void PosixDispatchSourceTimer::suspend() { state_->suspend(); }

void PosixDispatchSourceTimer::cancel() { state_->cancel(); }

} // namespace tallyfoot
