#pragma once

#include "Tallyfoot/Capture/References.h"
#include "Tallyfoot/Platform/Screen.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tallyfoot {

struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;
};

// Messages to live objects.
class ObjectMessages {
public:
    virtual ~ObjectMessages() = default;

    // --- Asking: what the object does not answer, answers with nil or with another type is absent, and
    // so is what it throws at. None throws, none retains.
    virtual std::optional<std::string> text(ObjectRef, SelectorRef) = 0;                     // NSString, as UTF-8
    virtual std::optional<std::string> text(ObjectRef, SelectorRef, std::int64_t index) = 0; // with one NSInteger
    virtual std::optional<bool> truth(ObjectRef, SelectorRef) = 0;                           // BOOL
    virtual std::optional<std::int64_t> integer(ObjectRef, SelectorRef) = 0;                 // NSInteger, NSUInteger
    virtual std::optional<double> doubleValue(ObjectRef, SelectorRef) = 0;
    virtual std::optional<float> floatValue(ObjectRef, SelectorRef) = 0;
    virtual std::optional<double> timeIntervalSince1970(ObjectRef, SelectorRef) = 0; // of the NSDate that it answers
    virtual ObjectRef object(ObjectRef, SelectorRef) = 0;
    virtual ObjectRef object(ObjectRef, SelectorRef, ObjectRef argument) = 0;
    virtual ObjectRef object(ObjectRef, SelectorRef, Point argument) = 0;
    virtual std::optional<Point> point(ObjectRef, SelectorRef, ObjectRef argument) = 0; // CGPoint
    virtual std::size_t count(ObjectRef array) = 0;                                     // 0 for anything but an NSArray
    virtual ObjectRef objectAtIndex(ObjectRef array, std::size_t index) = 0;            // nil beyond the end

    // --- Telling: arguments are objects, and nothing comes back. What the receiver throws passes through.
    virtual void objc_msgSend(ObjectRef, SelectorRef, std::span<const ObjectRef> arguments) = 0;
    // The same, with this implementation instead of the one that the receiver's class has.
    virtual void call(ImplementationRef, ObjectRef, SelectorRef, std::span<const ObjectRef> arguments) = 0;
    // As if the receiver's class did not have the method: to the object that it names
    // (forwardingTargetForSelector:), else through its forwardInvocation:, with a signature of so many objects,
    // whatever signature the class has for it. Nothing where the receiver, or whom it passes it on to, says
    // that it does not recognize it.
    virtual void forwardInvocation(ObjectRef, SelectorRef, std::span<const ObjectRef> arguments) = 0;
    virtual bool respondsToSelector(ObjectRef, SelectorRef) = 0; // asked of the object, which may know better
    virtual void addTarget(ObjectRef recognizer, ObjectRef target, SelectorRef action) = 0; // addTarget:action:

    // --- Whether an entry of the thread's call-stack symbols contains this ("UIControl touchesEnded").
    virtual bool callStackSymbolsContain(std::string_view marker) = 0;

    // --- The bounds of UIScreen's main screen; absent where there is none. Main thread.
    virtual std::optional<ScreenBounds> mainScreenBounds() = 0;
};

} // namespace tallyfoot
