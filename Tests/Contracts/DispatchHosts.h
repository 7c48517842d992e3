#pragma once

#include "Contracts/Implementation.h"
#include "Support/Occurrences.h"

#include "Tallyfoot/Platform/Dispatch.h"

#include <memory>

namespace tallyfoot::testing {

// A dispatch and the way in which time passes for it: by itself, or because the test says so.
class DispatchHost {
public:
    virtual ~DispatchHost() = default;
    virtual Dispatch& dispatch() = 0;
    virtual bool waitFor(const Occurrences& occurrences, int count) = 0;
};

Implementation<DispatchHost> posixDispatch();
Implementation<DispatchHost> manualDispatch();
Implementation<DispatchHost> manualDispatchWithRealQueues();

} // namespace tallyfoot::testing
