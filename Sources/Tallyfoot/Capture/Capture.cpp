#include "Tallyfoot/Capture/Capture.h"

#include "Tallyfoot/Capture/ControlActions.h"
#include "Tallyfoot/Capture/CustomOptions.h"
#include "Tallyfoot/Capture/DelegateHooks.h"
#include "Tallyfoot/Capture/Exchanges.h"
#include "Tallyfoot/Capture/Gestures.h"
#include "Tallyfoot/Capture/Held.h"
#include "Tallyfoot/Capture/PlatformObject.h"
#include "Tallyfoot/Capture/ScreenTracking.h"
#include "Tallyfoot/Capture/Selections.h"
#include "Tallyfoot/Platform/CancellationHold.h"

#include <atomic>
#include <cerrno>
#include <utility>

namespace tallyfoot {

namespace {

// What goes wrong while an interaction is looked at costs its event, never the interaction. errno stays as it was,
// and a thread that is cancelled goes on until it is done.
template <class Block>
void quietly(Block&& block) noexcept {
    const int kept = errno;
    const CancellationHold hold;
    try {
        std::forward<Block>(block)();
    } catch (...) { // NOLINT(bugprone-empty-catch): there is nobody to tell
    }
    errno = kept;
}

} // namespace

struct Capture::Implementation {
    Implementation(const CaptureBinding& binding, CaptureFacade& itsFacade)
        : platform(binding), facade(itsFacade), exchanges(platform), options(platform.runtime), screens(facade),
          actions(facade), gestures(actions), delegateHooks(platform), selections(facade) {}

    PlatformObject object(ObjectRef reference) const { return {platform, reference}; }

    const CapturePlatform platform;
    CaptureFacade& facade;
    const Exchanges exchanges;
    const CustomOptions options;
    ScreenTracking screens;
    const ControlActions actions;
    const Gestures gestures;
    DelegateHooks delegateHooks;
    const Selections selections;
    std::atomic<bool> isInstalled = false;
};

Capture::Capture(const CaptureBinding& binding, CaptureFacade& facade)
    : implementation_(std::make_unique<Implementation>(binding, facade)) {}

Capture::~Capture() = default;

void Capture::prepare() noexcept {
    quietly([this] { implementation_->exchanges.addMethods(); });
}

void Capture::configureSwizzle() noexcept {
    if (implementation_->isInstalled.exchange(true)) return; // a second time would undo the first
    prepare();
    quietly([this] { implementation_->exchanges.exchange(); });
}

void Capture::reportScreenSize() noexcept {
    quietly([this] {
        if (const auto bounds = implementation_->platform.messages.mainScreenBounds())
            implementation_->facade.setScreenSize(*bounds);
    });
}

// --- Options of an object --------------------------------------------------------------------

std::string Capture::customName(ObjectRef object) const noexcept {
    std::string name;
    quietly([&] { name = implementation_->options.customName(object); });
    return name;
}

void Capture::setCustomName(ObjectRef object, std::optional<std::string_view> name) noexcept {
    quietly([&] { implementation_->options.setCustomName(object, name); });
}

bool Capture::logEnabled(ObjectRef object) const noexcept {
    bool isEnabled = true;
    quietly([&] { isEnabled = implementation_->options.logEnabled(object); });
    return isEnabled;
}

void Capture::setLogEnabled(ObjectRef object, bool isEnabled) noexcept {
    quietly([&] { implementation_->options.setLogEnabled(object, isEnabled); });
}

// --- Bodies of exchanged methods ---------------------------------------------------------------

ObjectRef Capture::swizzle_initWithTarget(FunctionRef<ObjectRef()> forward) {
    const auto recognizer = forward();
    if (recognizer) quietly([&] { implementation_->gestures.addTarget(implementation_->object(recognizer)); });
    return recognizer;
}

bool Capture::swizzledSendAction(SelectorRef action, ObjectRef sender, FunctionRef<bool()> forward) {
    if (sender)
        quietly([&] {
            const auto* name = action ? implementation_->platform.runtime.sel_getName(action) : "";
            implementation_->actions.recordAction(name, implementation_->object(sender));
        });
    return forward();
}

// These two do not run the platform's own, which do nothing.
void Capture::swizzledViewWillAppear(ObjectRef controller) noexcept {
    reportScreenSize();
    quietly([&] { implementation_->screens.willAppear(implementation_->object(controller)); });
}

void Capture::swizzledViewWillDisappear(ObjectRef controller) noexcept {
    quietly([&] { implementation_->screens.willDisappear(implementation_->object(controller)); });
}

void Capture::swizzledSetter(MethodBody setter, ObjectRef self, ObjectRef delegate) {
    auto& platform = implementation_->platform;
    // One that takes its delegate back may be on its way out: it is not to be held.
    const Held selfHeld(platform.runtime, delegate ? self : ObjectRef{});
    const Held delegateHeld(platform.runtime, delegate);
    platform.messages.objc_msgSend(self, platform.runtime.sel_registerName(selectorName(setter)), {&delegate, 1});
    if (delegate) quietly([&] { implementation_->delegateHooks.intercept(setter, self, delegate); });
}

// --- Bodies of added methods -------------------------------------------------------------------

void Capture::swizzleGestureAction(ObjectRef recognizer) noexcept {
    quietly([&] { implementation_->gestures.recordGesture(implementation_->object(recognizer)); });
}

void Capture::swizzledCallback(MethodBody callback, ObjectRef delegate, ObjectRef sender, ObjectRef item) {
    // The host's own handling comes first, and may release what the event is about, and the delegate:
    // a collection, asked for its cell afterwards, may ask the delegate in turn.
    const Held delegateHeld(implementation_->platform.runtime, delegate);
    const Held senderHeld(implementation_->platform.runtime, sender);
    const Held itemHeld(implementation_->platform.runtime, item);
    if (implementation_->delegateHooks.forward(callback, delegate, sender, item))
        quietly([&] {
            implementation_->selections.record(callback, implementation_->object(sender),
                                               implementation_->object(item));
        });
}

} // namespace tallyfoot
