#pragma once

#include "Tallyfoot/Capture/Capture.h"

namespace tallyfoot::objc {

// This process's capture, connected on first use. Never released.
Capture& capture();

} // namespace tallyfoot::objc
