#pragma once

namespace tallyfoot {

// For as long as it lives, the calling thread is not cancelled: a request that comes meanwhile is heard at
// the next point of cancellation behind it. For what must not be left half-done and lets no exception out,
// which is how a cancellation would go through it.
class CancellationHold {
public:
    CancellationHold() noexcept;
    ~CancellationHold();
    CancellationHold(const CancellationHold&) = delete;
    CancellationHold& operator=(const CancellationHold&) = delete;

private:
    int former_ = 0;
};

} // namespace tallyfoot
