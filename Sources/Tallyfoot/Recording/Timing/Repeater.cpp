#include "Tallyfoot/Recording/Timing/Repeater.h"

#include "Tallyfoot/Platform/FatalError.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace tallyfoot {

namespace {

std::shared_ptr<DispatchQueue> orOwnQueue(Dispatch& dispatch, std::shared_ptr<DispatchQueue> queue) {
    return queue ? std::move(queue) : dispatch.makeQueue("com.repeat.queue");
}

} // namespace

std::shared_ptr<Repeater> Repeater::make(Dispatch& dispatch, Interval interval, Mode mode,
                                         DispatchTimeInterval tolerance, std::shared_ptr<DispatchQueue> queue,
                                         Observer observer) {
    std::shared_ptr<Repeater> repeater(new Repeater(dispatch, interval, mode, tolerance, std::move(queue)));
    {
        MutexLock lock(repeater->mutex_);
        repeater->buildTimer();
    }
    if (observer) repeater->observe(std::move(observer));
    return repeater;
}

std::shared_ptr<Repeater> Repeater::once(Dispatch& dispatch, Interval after, std::shared_ptr<DispatchQueue> queue,
                                         Observer observer) {
    auto repeater = make(dispatch, after, Mode::once(), DispatchTimeInterval::nanoseconds(0), std::move(queue),
                         std::move(observer));
    repeater->start();
    return repeater;
}

std::shared_ptr<Repeater> Repeater::every(Dispatch& dispatch, Interval interval, std::optional<std::int64_t> count,
                                          std::shared_ptr<DispatchQueue> queue, Observer observer) {
    auto repeater = make(dispatch, interval, count ? Mode::finite(*count) : Mode::infinite(),
                         DispatchTimeInterval::nanoseconds(0), std::move(queue), std::move(observer));
    repeater->start();
    return repeater;
}

Repeater::Repeater(Dispatch& dispatch, Interval interval, Mode mode, DispatchTimeInterval tolerance,
                   std::shared_ptr<DispatchQueue> queue)
    : dispatch_(dispatch), mode_(mode), tolerance_(tolerance), queue_(orOwnQueue(dispatch, std::move(queue))),
      remainingIterations_(mode.countIterations()), interval_(interval) {}

Repeater::~Repeater() {
    observers_.clear();
    destroyTimer();
}

Repeater::State Repeater::state() const {
    MutexLock lock(mutex_);
    return state_;
}

std::optional<std::int64_t> Repeater::remainingIterations() const {
    MutexLock lock(mutex_);
    return remainingIterations_;
}

// What a host's closure holds may do anything when it is released, so a closure that leaves its
// place is always released after the lock.

void Repeater::setOnStateChanged(StateListener listener) {
    auto other = listener ? std::make_shared<StateListener>(std::move(listener)) : nullptr;
    MutexLock lock(mutex_);
    onStateChanged_.swap(other);
}

Repeater::ObserverID Repeater::observe(Observer observer) {
    auto added = std::make_shared<Observer>(std::move(observer));
    MutexLock lock(mutex_);
    const ObserverID id = nextObserverID_.next();
    observers_[id].swap(added);
    return id;
}

void Repeater::remove(ObserverID observer) {
    decltype(observers_)::node_type removed;
    MutexLock lock(mutex_);
    removed = observers_.extract(observer);
}

void Repeater::removeAllObservers(bool thenStop) {
    const auto self = shared_from_this();
    decltype(observers_) removed;
    {
        MutexLock lock(mutex_);
        observers_.swap(removed);
    }
    if (thenStop) pause();
}

bool Repeater::start() {
    const auto self = shared_from_this();
    State former{};
    {
        MutexLock lock(mutex_);
        former = state_;
        if (former == State::paused) state_ = State::running;
    }
    if (isRunning(former)) return false;
    if (isFinished(former)) {
        reset(std::nullopt, true);
    } else {
        announceRunning();
    }
    return true;
}

bool Repeater::pause() {
    const auto self = shared_from_this();
    {
        MutexLock lock(mutex_);
        if (!isRunning(state_) || !change(state_, State::paused)) return false;
    }
    notify(State::paused);
    return true;
}

void Repeater::reset(std::optional<Interval> interval, bool restart) {
    const auto self = shared_from_this();
    pause();
    {
        MutexLock lock(mutex_);
        remainingIterations_ = mode_.countIterations();
        if (interval) interval_ = *interval;
        destroyTimer();
        buildTimer();
        state_ = State::paused;
    }
    notify(State::paused);
    if (!restart) return;
    {
        MutexLock lock(mutex_);
        state_ = State::running;
    }
    announceRunning();
}

void Repeater::fire(bool andPause) {
    const auto self = shared_from_this();
    tick(std::nullopt);
    if (andPause) pause();
}

// The listener hears of `running` before the first tick can come. What it does there counts: a
// repeater that is paused again stays suspended.
void Repeater::announceRunning() {
    notify(State::running);
    MutexLock lock(mutex_);
    if (isRunning(state_)) resumeTimer();
}

void Repeater::notify(State state) {
    std::shared_ptr<StateListener> listener;
    {
        MutexLock lock(mutex_);
        listener = onStateChanged_;
    }
    if (listener) (*listener)(*this, state);
}

void Repeater::tick(std::optional<std::uint64_t> source) {
    std::uint64_t round = 0;
    {
        MutexLock lock(mutex_);
        if (!begin(source)) return;
        round = timerNumber_;
    }
    notify(State::executing);

    std::vector<std::shared_ptr<Observer>> observers;
    {
        MutexLock lock(mutex_);
        observers.reserve(observers_.size());
        for (const auto& [id, observer] : observers_) observers.push_back(observer);
    }
    for (const auto& observer : observers) {
        if (*observer) (*observer)(*this);
    }

    bool isLast = false;
    {
        MutexLock lock(mutex_);
        // A reset from within the tick began a new round; this tick belongs to the one before.
        isLast = round == timerNumber_ && finish();
    }
    if (isLast) notify(State::finished);
}

bool Repeater::begin(std::optional<std::uint64_t> source) {
    if (source && *source != timerNumber_) return false;
    if (source && !isRunning(state_)) {
        // Paused while this tick was on its way: it is due as soon as the repeater starts again.
        nextDeadline_ = std::chrono::nanoseconds::zero();
        return false;
    }
    if (source && mode_.isOnce()) nextDeadline_ = interval_.value().duration();
    state_ = State::executing;
    return true;
}

bool Repeater::finish() {
    if (mode_.isInfinite()) return false;
    if (!mode_.isOnce()) {
        if (!remainingIterations_) fatalError("a repeater lost its count");
        if (*remainingIterations_ == std::numeric_limits<std::int64_t>::min()) {
            fatalError("the count of a repeater underflows");
        }
        if ((*remainingIterations_)-- != 1) return false;
    }
    return change(State::executing, State::finished);
}

bool Repeater::change(State expected, State state) {
    if (state_ != expected) return false;
    suspendTimer();
    state_ = state;
    return true;
}

void Repeater::buildTimer() {
    timer_ = dispatch_.makeTimerSource(queue_);
    isSuspended_ = true;
    ++timerNumber_;
    schedule(interval_.value().duration());
    timer_->setEventHandler([weak = weak_from_this(), number = timerNumber_] {
        if (const auto repeater = weak.lock()) repeater->tick(number);
    });
}

void Repeater::destroyTimer() {
    if (!timer_) return;
    timer_->setEventHandler({});
    timer_->cancel();
    nextDeadline_.reset();
    resumeTimer(); // the platform forbids releasing a suspended source
    timer_.reset();
}

void Repeater::schedule(std::chrono::nanoseconds deadline) {
    std::optional<std::chrono::nanoseconds> repeating;
    if (!mode_.isOnce()) repeating = std::max(interval_.value().duration(), std::chrono::nanoseconds::zero());
    timer_->schedule(deadline, repeating, tolerance_.duration());
}

void Repeater::suspendTimer() {
    if (isSuspended_ || !timer_) return;
    timer_->suspend();
    isSuspended_ = true;
}

void Repeater::resumeTimer() {
    if (!isSuspended_) return;
    if (nextDeadline_) schedule(*std::exchange(nextDeadline_, std::nullopt));
    timer_->resume();
    isSuspended_ = false;
}

std::string_view description(Repeater::State state) noexcept {
    switch (state) {
    case Repeater::State::paused: return "idle/paused";
    case Repeater::State::running: return "running";
    case Repeater::State::executing: return "executing";
    case Repeater::State::finished: return "finished";
    }
    return {};
}

} // namespace tallyfoot
