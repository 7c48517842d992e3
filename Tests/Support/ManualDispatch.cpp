#include "Support/ManualDispatch.h"

#include "Tallyfoot/Platform/Mutex.h"
#include "Tallyfoot/Platform/Posix/PosixDispatchQueue.h"
#include "Tallyfoot/Platform/Posix/PosixDispatchSourceTimer.h"

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace tallyfoot::testing {

// The turns of a manual queue are those of a real one; only its thread is missing.
class ManualDispatch::Work final : public AlarmClock {
public:
    struct Block {
        std::shared_ptr<DispatchQueue> turns;
        std::function<void()> block;
    };

    explicit Work(Options chosen) : options(std::move(chosen)) {}

    const Options options;

    // AlarmClock

    Instant now() const override {
        MutexLock lock(mutex_);
        return now_;
    }
    AlarmKey set(Instant time, std::shared_ptr<Alarm> alarm) override {
        MutexLock lock(mutex_);
        return alarms_.emplace(AlarmKey{time, ++counter_}, std::move(alarm)).first->first;
    }
    void remove(const AlarmKey& key) override {
        std::map<AlarmKey, std::shared_ptr<Alarm>>::node_type removed; // released after the lock
        MutexLock lock(mutex_);
        removed = alarms_.extract(key);
    }

    // Time

    void advance(std::chrono::nanoseconds step) {
        const auto end = now() + step;
        drain();
        while (auto next = takeAlarm(end)) {
            next->second->ring(next->first);
            drain();
        }
        moveTo(end);
    }

    // Blocks

    void add(Block block) {
        MutexLock lock(mutex_);
        blocks_.push_back(std::move(block));
    }
    void addRealQueue(const std::shared_ptr<DispatchQueue>& queue) {
        MutexLock lock(mutex_);
        realQueues_.push_back(queue);
    }
    void drain() {
        while (runNext(nullptr)) {
        }
        // A sync finds its turn after the blocks that wait already.
        for (const auto& queue : realQueues()) queue->sync([] {});
    }
    void drain(const DispatchQueue& only) {
        while (runNext(&only)) {
        }
    }

    std::size_t waitingBlocks() const {
        MutexLock lock(mutex_);
        return blocks_.size();
    }
    std::size_t armedTimers() const {
        MutexLock lock(mutex_);
        return alarms_.size();
    }

private:
    using Due = std::pair<AlarmKey, std::shared_ptr<Alarm>>;

    std::optional<Due> takeAlarm(Instant end) {
        Due due;
        {
            MutexLock lock(mutex_);
            if (alarms_.empty() || alarms_.begin()->first.first > end) return std::nullopt;
            due = *alarms_.begin();
            alarms_.erase(alarms_.begin());
        }
        moveTo(due.first.first);
        return due;
    }

    void moveTo(Instant time) {
        MutexLock lock(mutex_);
        if (time <= now_) return;
        if (options.clock) options.clock->advance(time - now_);
        now_ = time;
    }

    // False when no block was waiting. A block is taken inside its queue's turn only, so that several
    // threads that drain keep its order.
    bool runNext(const DispatchQueue* only) {
        const auto turns = queueOfNext(only);
        if (!turns) return false;
        turns->sync([&] {
            if (const auto block = takeBlock(*turns)) block();
        });
        return true;
    }

    std::shared_ptr<DispatchQueue> queueOfNext(const DispatchQueue* only) const {
        MutexLock lock(mutex_);
        for (const auto& waiting : blocks_)
            if (only == nullptr || waiting.turns.get() == only) return waiting.turns;
        return nullptr;
    }

    std::function<void()> takeBlock(const DispatchQueue& turns) {
        MutexLock lock(mutex_);
        for (auto place = blocks_.begin(); place != blocks_.end(); ++place) {
            if (place->turns.get() != &turns) continue;
            auto block = std::move(place->block);
            blocks_.erase(place);
            return block;
        }
        return nullptr;
    }

    std::vector<std::shared_ptr<DispatchQueue>> realQueues() {
        MutexLock lock(mutex_);
        std::vector<std::shared_ptr<DispatchQueue>> alive;
        for (const auto& queue : realQueues_)
            if (auto strong = queue.lock()) alive.push_back(std::move(strong));
        return alive;
    }

    mutable Mutex mutex_;
    Instant now_ TALLYFOOT_GUARDED_BY(mutex_){std::chrono::hours(1)};
    std::uint64_t counter_ TALLYFOOT_GUARDED_BY(mutex_) = 0;
    std::map<AlarmKey, std::shared_ptr<Alarm>> alarms_ TALLYFOOT_GUARDED_BY(mutex_);
    std::deque<Block> blocks_ TALLYFOOT_GUARDED_BY(mutex_);
    std::vector<std::weak_ptr<DispatchQueue>> realQueues_ TALLYFOOT_GUARDED_BY(mutex_);
};

class ManualDispatch::Queue final : public DispatchQueue {
public:
    Queue(std::string label, std::shared_ptr<Work> work)
        : turns_(std::make_shared<PosixDispatchQueue>(std::move(label))), work_(std::move(work)) {}

    void sync(FunctionRef<void()> block) override {
        if (!isCurrent()) work_->drain(*turns_); // the blocks of one thread run in its order
        turns_->sync(block);
    }
    void async(std::function<void()> block) override { work_->add({turns_, std::move(block)}); }
    bool isCurrent() const noexcept override { return turns_->isCurrent(); }
    const std::string& label() const noexcept override { return turns_->label(); }

private:
    std::shared_ptr<DispatchQueue> turns_;
    std::shared_ptr<Work> work_;
};

ManualDispatch::ManualDispatch() : ManualDispatch(Options()) {}

ManualDispatch::ManualDispatch(Options options) : work_(std::make_shared<Work>(std::move(options))) {}

ManualDispatch::~ManualDispatch() { drain(); }

std::shared_ptr<DispatchQueue> ManualDispatch::makeQueue(std::string label) {
    if (!work_->options.realQueues) return std::make_shared<Queue>(std::move(label), work_);
    auto queue = std::make_shared<PosixDispatchQueue>(std::move(label));
    work_->addRealQueue(queue);
    return queue;
}

namespace {

// Keeps the alarm clock for as long as a timer stands on it.
class ManualTimer final : public DispatchSourceTimer {
public:
    ManualTimer(std::shared_ptr<DispatchQueue> queue, std::shared_ptr<AlarmClock> clock)
        : clock_(std::move(clock)), timer_(std::move(queue), *clock_) {}

    void schedule(std::chrono::nanoseconds deadline, std::optional<std::chrono::nanoseconds> repeating,
                  std::chrono::nanoseconds leeway) override {
        timer_.schedule(deadline, repeating, leeway);
    }
    void setEventHandler(std::function<void()> handler) override { timer_.setEventHandler(std::move(handler)); }
    void resume() override { timer_.resume(); }
    void suspend() override { timer_.suspend(); }
    void cancel() override { timer_.cancel(); }

private:
    std::shared_ptr<AlarmClock> clock_;
    PosixDispatchSourceTimer timer_;
};

} // namespace

std::unique_ptr<DispatchSourceTimer> ManualDispatch::makeTimerSource(std::shared_ptr<DispatchQueue> queue) {
    return std::make_unique<ManualTimer>(std::move(queue), work_);
}

void ManualDispatch::advance(std::chrono::nanoseconds step) { work_->advance(step); }

void ManualDispatch::drain() { work_->drain(); }

std::size_t ManualDispatch::waitingBlocks() const { return work_->waitingBlocks(); }

std::size_t ManualDispatch::armedTimers() const { return work_->armedTimers(); }

} // namespace tallyfoot::testing
