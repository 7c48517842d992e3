#include "TallyfootObjC/Binding/Binding.h"

#include "TallyfootObjC/Binding/LiveBodies.h"
#include "TallyfootObjC/Binding/LiveMessages.h"
#include "TallyfootObjC/Binding/LiveRuntime.h"

#include "Tallyfoot/Facade/CaptureConnection.h"

namespace tallyfoot::objc {

namespace {

struct Platform {
    LiveRuntime runtime;
    LiveMessages messages;
    LiveBodies bodies;
};

Capture& connect() {
    auto& platform = *new Platform;
    return connectCapture({platform.runtime, platform.messages, platform.bodies});
}

} // namespace

Capture& capture() {
    static Capture& connected = connect();
    return connected;
}

} // namespace tallyfoot::objc
