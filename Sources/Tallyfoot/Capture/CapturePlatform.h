#pragma once

#include "Tallyfoot/Capture/CaptureBinding.h"
#include "Tallyfoot/Capture/Message.h"

namespace tallyfoot {

// The binding, and the selectors that are sent through it.
struct CapturePlatform {
    explicit CapturePlatform(const CaptureBinding& binding)
        : runtime(binding.runtime), messages(binding.messages), bodies(binding.bodies), vocabulary(binding.runtime) {}

    ObjectiveCRuntime& runtime;
    ObjectMessages& messages;
    MethodBodies& bodies;
    const Messages vocabulary;
};

} // namespace tallyfoot
