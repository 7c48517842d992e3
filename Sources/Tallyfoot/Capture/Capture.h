#pragma once

#include "Tallyfoot/Capture/CaptureBinding.h"
#include "Tallyfoot/Capture/CaptureFacade.h"
#include "Tallyfoot/Export.h"
#include "Tallyfoot/Platform/FunctionRef.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

// Automatic capture: what the user does becomes events, without a line of the host's. The binding puts
// its method bodies in place through `prepare` and `configureSwizzle`; afterwards each body calls one
// operation here, with its own arguments, and does nothing else. What an operation calls forward or
// sends on may throw, and that passes through; nothing else leaves it. Main thread, but
// the options on any.
class TALLYFOOT_EXPORT Capture {
public:
    Capture(const CaptureBinding& binding, CaptureFacade& facade);
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    // Adds the library's methods (MethodBody) to those classes that exist, so that hosts may use the two
    // options before anything is switched on. Again at any time, for classes that came later.
    void prepare() noexcept;
    // The ten exchanges. A class or selector that is missing is skipped. Once; never undone.
    void configureSwizzle() noexcept;
    // Tells the facade how big the main screen is, for uploads run on threads that may not ask the platform.
    // When a host switches the library on; each screen that appears does it again, for devices are turned.
    void reportScreenSize() noexcept;

    // --- Options of an object ------------------------------------------------------------------

    std::string customName(ObjectRef object) const noexcept;                             // "" when never set
    void setCustomName(ObjectRef object, std::optional<std::string_view> name) noexcept; // none: as never set
    bool logEnabled(ObjectRef object) const noexcept;                                    // true when never set
    void setLogEnabled(ObjectRef object, bool isEnabled) noexcept;

    // --- Bodies of exchanged methods; `forward` sends the body's own selector with its own arguments ----

    ObjectRef swizzle_initWithTarget(FunctionRef<ObjectRef()> forward); // what forward gives; self is gone by then
    bool swizzledSendAction(SelectorRef action, ObjectRef sender, FunctionRef<bool()> forward);
    void swizzledViewWillAppear(ObjectRef controller) noexcept;
    void swizzledViewWillDisappear(ObjectRef controller) noexcept;
    void swizzledSetter(MethodBody setter, ObjectRef self, ObjectRef delegate); // forwards by itself

    // --- Bodies of added methods -----------------------------------------------------------------

    void swizzleGestureAction(ObjectRef recognizer) noexcept;
    // A delegate's callback: its sender is the first argument, its item (index path, bar item) the second.
    // Sends the host's own implementation by itself.
    void swizzledCallback(MethodBody callback, ObjectRef delegate, ObjectRef sender, ObjectRef item = {});

private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace tallyfoot
