#include "Tallyfoot/Platform/Posix/Turn.h"

#include "Tallyfoot/Platform/Posix/Condition.h"

namespace tallyfoot {

namespace {

// About ten microseconds: several of the turns that are taken for an event, less than a sleep costs.
constexpr int spins = 400;
constexpr std::chrono::microseconds fairAfter{1000};
constexpr std::chrono::microseconds betweenHandovers{200}; // bounds what fairness costs the others

void relax() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

} // namespace

// Lives on the stack of the thread that waits.
struct Turn::Waiter {
    enum class Signal { none, compete, handedOver };

    Condition signalled;
    Signal signal = Signal::none;
    Instant since{};
    Waiter* next = nullptr;
    bool wasWoken = false; // and has not had the turn since
};

void Turn::lockSlowly() {
    Waiter waiter;
    for (int spun = 0;;) {
        auto state = state_.load(std::memory_order_relaxed);
        if ((state & held) == 0) {
            const auto taken = (state | held) & ~(waiter.wasWoken ? woken : 0);
            if (state_.compare_exchange_weak(state, taken, std::memory_order_acquire, std::memory_order_relaxed))
                return;
        } else if (spun < spins) {
            ++spun;
            relax();
        } else if (park(waiter)) {
            return;
        } else {
            spun = 0;
        }
    }
}

// True when the turn was handed over; false when the waiter has to compete.
bool Turn::park(Waiter& waiter) {
    MutexLock lock(parking_);
    for (auto state = state_.load(std::memory_order_relaxed);;) {
        if ((state & held) == 0) return false; // given back meanwhile, by one who saw nobody waiting
        const auto waiting = (state | parked) & ~(waiter.wasWoken ? woken : 0);
        if (state_.compare_exchange_weak(state, waiting, std::memory_order_relaxed)) break;
    }

    // Whoever lost after having been woken stays the first.
    waiter.signal = Waiter::Signal::none;
    if (waiter.wasWoken) {
        waiter.next = first_;
        first_ = &waiter;
        if (last_ == nullptr) last_ = &waiter;
    } else {
        waiter.since = std::chrono::steady_clock::now();
        waiter.next = nullptr;
        (last_ == nullptr ? first_ : last_->next) = &waiter;
        last_ = &waiter;
    }
    while (waiter.signal == Waiter::Signal::none) waiter.signalled.wait(parking_);
    waiter.wasWoken = true;
    return waiter.signal == Waiter::Signal::handedOver;
}

void Turn::unlockSlowly() {
    auto state = state_.load(std::memory_order_relaxed);
    while ((state & parked) == 0 || (state & woken) != 0)
        if (state_.compare_exchange_weak(state, state & ~held, std::memory_order_release, std::memory_order_relaxed))
            return;

    MutexLock lock(parking_);
    Waiter& waiter = *first_;
    first_ = waiter.next;
    if (first_ == nullptr) {
        last_ = nullptr;
        state_.fetch_and(~parked, std::memory_order_relaxed);
    }
    const auto now = std::chrono::steady_clock::now();
    if (now - waiter.since >= fairAfter && now - lastHandover_ >= betweenHandovers) {
        lastHandover_ = now;
        waiter.signal = Waiter::Signal::handedOver; // `held` stays set on the waiter's behalf
    } else {
        waiter.signal = Waiter::Signal::compete;
        state_.fetch_xor(held | woken, std::memory_order_release); // held off, woken on, in one step
    }
    // Under the lock, because the waiter is gone as soon as it can have seen its signal.
    waiter.signalled.notifyOne();
}

} // namespace tallyfoot
