#include "Contracts/DispatchHosts.h"

#include "Support/ManualDispatch.h"

#include "Tallyfoot/Platform/Posix/PosixDispatch.h"

namespace tallyfoot::testing {

using namespace std::chrono_literals;

namespace {

class PosixHost final : public DispatchHost {
public:
    Dispatch& dispatch() override { return dispatch_; }
    bool waitFor(const Occurrences& occurrences, int count) override { return occurrences.waitFor(count); }

private:
    PosixDispatch dispatch_;
};

class ManualHost final : public DispatchHost {
public:
    explicit ManualHost(bool realQueues)
        : realQueues_(realQueues), dispatch_({.realQueues = realQueues, .clock = nullptr}) {}
    Dispatch& dispatch() override { return dispatch_; }
    bool waitFor(const Occurrences& occurrences, int count) override {
        dispatch_.drain();
        for (int step = 0; occurrences.count() < count && step < 60'000; ++step) dispatch_.advance(1ms);
        // The last blocks of a real queue that was released meanwhile are nobody's to drain.
        return realQueues_ ? occurrences.waitFor(count) : occurrences.count() >= count;
    }

private:
    bool realQueues_;
    ManualDispatch dispatch_;
};

} // namespace

Implementation<DispatchHost> posixDispatch() {
    return {"Posix", [] { return std::make_shared<PosixHost>(); }};
}

Implementation<DispatchHost> manualDispatch() {
    return {"Manual", [] { return std::make_shared<ManualHost>(false); }};
}

Implementation<DispatchHost> manualDispatchWithRealQueues() {
    return {"ManualWithRealQueues", [] { return std::make_shared<ManualHost>(true); }};
}

} // namespace tallyfoot::testing
