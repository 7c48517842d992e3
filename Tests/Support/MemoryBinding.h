#pragma once

#include "Support/MemoryRuntime.h"

#include "Tallyfoot/Capture/Capture.h"

#include <map>

namespace tallyfoot::testing {

// The library's methods for a runtime in memory: each calls the capture, as a platform's binding does.
class MemoryBinding final : public MethodBodies {
public:
    explicit MemoryBinding(MemoryRuntime& runtime) : runtime_(runtime) {}

    CaptureBinding references() { return {runtime_, runtime_, *this}; }
    void connect(Capture& capture) { capture_ = &capture; } // before any of the methods runs

    Code code(MethodBody body) override;

private:
    MemoryRuntime::Value run(MethodBody body, const MemoryRuntime::Invocation& call);

    MemoryRuntime& runtime_;
    Capture* capture_ = nullptr;
    std::map<MethodBody, ImplementationRef> implementations_;
};

} // namespace tallyfoot::testing
