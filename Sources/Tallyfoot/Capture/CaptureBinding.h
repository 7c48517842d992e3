#pragma once

#include "Tallyfoot/Capture/MethodBody.h"
#include "Tallyfoot/Capture/ObjectMessages.h"
#include "Tallyfoot/Capture/ObjectiveCRuntime.h"

namespace tallyfoot {

// All that capture needs of the platform. The three outlive the capture, and so the process.
struct CaptureBinding {
    ObjectiveCRuntime& runtime;
    ObjectMessages& messages;
    MethodBodies& bodies;
};

} // namespace tallyfoot
