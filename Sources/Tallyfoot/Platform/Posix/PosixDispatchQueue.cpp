#include "Tallyfoot/Platform/Posix/PosixDispatchQueue.h"

#include "Tallyfoot/Platform/Posix/Condition.h"
#include "Tallyfoot/Platform/Posix/DetachedThread.h"
#include "Tallyfoot/Platform/Posix/TimerThread.h"
#include "Tallyfoot/Platform/Posix/Turn.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <thread>
#include <utility>

namespace tallyfoot {

class PosixDispatchQueue::State : public Alarm, public std::enable_shared_from_this<State> {
public:
    explicit State(std::string text) : label(std::move(text)) {}

    bool isCurrent() const noexcept {
        // Only this thread can have written its own number, so that no order is needed.
        return owner_.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

    void sync(FunctionRef<void()> block) {
        if (isCurrent()) return block();
        if (waiting_.load(std::memory_order_acquire) != 0) waitForEarlierBlocks();
        const Hold hold(*this);
        block();
    }

    void async(std::function<void()> block) {
        {
            MutexLock lock(mutex_);
            blocks_.push_back(std::move(block));
            ++enqueued_;
            waiting_.fetch_add(1, std::memory_order_release);
            if (ensureThread()) return work_.notifyOne();
        }
        // The block may be a timer's, on a queue to which nobody else comes.
        TimerThread::shared().set(Instant::min(), shared_from_this());
    }

    void ring(const AlarmKey&) override { runBlocksHere(); }

    void release() {
        if (isCurrent()) keepUntilEndOfTurn();
        bool isStranded = false;
        {
            MutexLock lock(mutex_);
            isReleased_ = true;
            isStranded = !blocks_.empty() && !ensureThread();
            work_.notifyOne();
        }
        if (isStranded) runBlocksHere();
    }

    const std::string label;

private:
    class TALLYFOOT_SCOPED_CAPABILITY Hold {
    public:
        explicit Hold(State& state) TALLYFOOT_ACQUIRE(state.turn_) : state_(state) {
            state_.turn_.lock();
            state_.owner_.store(std::this_thread::get_id(), std::memory_order_relaxed);
        }
        ~Hold() TALLYFOOT_RELEASE() {
            const auto last = std::move(state_.self_); // released after the turn, which is a part of it
            state_.owner_.store({}, std::memory_order_relaxed);
            state_.turn_.unlock();
        }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

    private:
        State& state_;
    };

    void assertCurrent() const TALLYFOOT_ASSERT_CAPABILITY(turn_) {}

    // The block that is running released its queue: what it runs on has to stay until it ends.
    void keepUntilEndOfTurn() {
        assertCurrent();
        self_ = shared_from_this();
    }

    bool ensureThread() TALLYFOOT_REQUIRES(mutex_) {
        if (!hasThread_) hasThread_ = startDetachedThread(label, [self = shared_from_this()] { self->runThread(); });
        return hasThread_;
    }

    void runThread() {
        for (;;) {
            {
                MutexLock lock(mutex_);
                while (blocks_.empty() && !isReleased_) work_.wait(mutex_);
                if (blocks_.empty()) return;
            }
            bool ran = false;
            {
                const Hold hold(*this);
                ran = runBlockIfAny(); // a caller may have done it meanwhile
            }
            if (ran) finishBlock();
        }
    }

    void finishBlock() {
        MutexLock lock(mutex_);
        ++finished_;
        waiting_.fetch_sub(1, std::memory_order_release);
        finishedOne_.notifyAll();
    }

    void waitForEarlierBlocks() {
        {
            MutexLock lock(mutex_);
            if (ensureThread()) {
                for (const auto last = enqueued_; finished_ < last;) finishedOne_.wait(mutex_);
                return;
            }
        }
        runBlocksHere();
    }

    // Where the system has no thread to give, the timers' thread does the queue's work, or the next caller.
    void runBlocksHere() {
        for (bool ran = true; ran;) {
            if (isCurrent()) {
                assertCurrent();
                ran = runBlockIfAny();
            } else {
                const Hold hold(*this);
                ran = runBlockIfAny();
            }
            if (ran) finishBlock();
        }
    }

    bool runBlockIfAny() TALLYFOOT_REQUIRES(turn_) {
        std::function<void()> block;
        {
            MutexLock lock(mutex_);
            if (blocks_.empty()) return false;
            block = std::move(blocks_.front());
            blocks_.pop_front();
        }
        block();
        return true;
    }

    Turn turn_;
    std::atomic<std::thread::id> owner_{};
    std::shared_ptr<State> self_ TALLYFOOT_GUARDED_BY(turn_);

    std::atomic<std::uint64_t> waiting_{0}; // async blocks that have not ended, for a quick look
    Mutex mutex_;
    Condition work_;
    Condition finishedOne_;
    std::deque<std::function<void()>> blocks_ TALLYFOOT_GUARDED_BY(mutex_);
    std::uint64_t enqueued_ TALLYFOOT_GUARDED_BY(mutex_) = 0;
    std::uint64_t finished_ TALLYFOOT_GUARDED_BY(mutex_) = 0;
    bool hasThread_ TALLYFOOT_GUARDED_BY(mutex_) = false;
    bool isReleased_ TALLYFOOT_GUARDED_BY(mutex_) = false;
};

PosixDispatchQueue::PosixDispatchQueue(std::string label) : state_(std::make_shared<State>(std::move(label))) {}

PosixDispatchQueue::~PosixDispatchQueue() { state_->release(); }

void PosixDispatchQueue::sync(FunctionRef<void()> block) { state_->sync(block); }

void PosixDispatchQueue::async(std::function<void()> block) { state_->async(std::move(block)); }

bool PosixDispatchQueue::isCurrent() const noexcept { return state_->isCurrent(); }

const std::string& PosixDispatchQueue::label() const noexcept { return state_->label; }

} // namespace tallyfoot
