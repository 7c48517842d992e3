#pragma once

#include "Tallyfoot/Capture/Capture.h"
#include "Tallyfoot/Export.h"

namespace tallyfoot {

// For the binding of a platform: gives the facade its capture, so that `configureSwizzle` installs it
// and events carry the current screen's title. The binding calls this once, before the first configure,
// then `prepare` as soon as the platform's classes are there. Neither touches the facade, so that both may
// happen while the process's libraries are loaded. A host without a binding captures nothing. Never
// released. Calling it again gives the same capture.
TALLYFOOT_EXPORT Capture& connectCapture(const CaptureBinding& binding);

// Installs the interceptions of the capture that is connected by now, if any is.
void installConnectedCapture();

} // namespace tallyfoot
