#include "Timing/SpyDispatch.h"

#include <gtest/gtest.h>

namespace tallyfoot::testing {

namespace {

class SpyTimer final : public DispatchSourceTimer {
public:
    SpyTimer(std::unique_ptr<DispatchSourceTimer> real, std::shared_ptr<Exclusive<TimerLog>> log)
        : real_(std::move(real)), log_(std::move(log)) {}

    ~SpyTimer() override {
        log_->modify([](TimerLog& log) {
            EXPECT_TRUE(log.isCancelled) << "released without being cancelled";
            EXPECT_EQ(log.resumes, log.suspends + 1) << "released while suspended";
            EXPECT_FALSE(log.handler) << "released with its handler";
            log.isReleased = true;
        });
    }

    void schedule(std::chrono::nanoseconds deadline, std::optional<std::chrono::nanoseconds> repeating,
                  std::chrono::nanoseconds leeway) override {
        log_->modify([&](TimerLog& log) {
            EXPECT_FALSE(log.isCancelled) << "scheduled after being cancelled";
            log.deadline = deadline;
            log.repeating = repeating;
            log.leeway = leeway;
            ++log.schedules;
        });
        real_->schedule(deadline, repeating, leeway);
    }

    void setEventHandler(std::function<void()> handler) override {
        log_->modify([&](TimerLog& log) { log.handler = handler; });
        real_->setEventHandler(std::move(handler));
    }

    void resume() override {
        log_->modify([](TimerLog& log) {
            EXPECT_LE(log.resumes, log.suspends) << "resumed once too often";
            ++log.resumes;
        });
        real_->resume();
    }

    void suspend() override {
        log_->modify([](TimerLog& log) {
            EXPECT_GT(log.resumes, log.suspends) << "suspended twice";
            ++log.suspends;
        });
        real_->suspend();
    }

    void cancel() override {
        log_->modify([](TimerLog& log) { log.isCancelled = true; });
        real_->cancel();
    }

private:
    std::unique_ptr<DispatchSourceTimer> real_;
    std::shared_ptr<Exclusive<TimerLog>> log_;
};

} // namespace

std::unique_ptr<DispatchSourceTimer> SpyDispatch::makeTimerSource(std::shared_ptr<DispatchQueue> queue) {
    auto log = std::make_shared<Exclusive<TimerLog>>();
    log->modify([&](TimerLog& entry) { entry.queueLabel = queue->label(); });
    timers_.modify([&](auto& timers) { timers.push_back(log); });
    return std::make_unique<SpyTimer>(real_.makeTimerSource(std::move(queue)), std::move(log));
}

std::size_t SpyDispatch::timersMade() const {
    return timers_.read([](const auto& timers) { return timers.size(); });
}

TimerLog SpyDispatch::timer(std::size_t index) const {
    return timers_.read([&](const auto& timers) { return timers.at(index); })->copy();
}

} // namespace tallyfoot::testing
