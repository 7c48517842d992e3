#pragma once

#include "Tallyfoot/Capture/MethodBody.h"

namespace tallyfoot::objc {

// The methods that the library brings, each of which hands its arguments to the capture.
class LiveBodies final : public MethodBodies {
public:
    Code code(MethodBody body) override;
};

} // namespace tallyfoot::objc
