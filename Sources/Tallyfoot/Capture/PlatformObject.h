#pragma once

#include "Tallyfoot/Capture/CapturePlatform.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

// A live object as the rules of capture see it, for the length of one call: its class, its kind, its
// options, and the few properties read of it, each only when asked for. May be nil, which has nothing.
class PlatformObject {
public:
    PlatformObject(const CapturePlatform& platform, ObjectRef object) : platform_(&platform), object_(object) {}

    explicit operator bool() const noexcept { return static_cast<bool>(object_); }

    ObjectRef reference() const noexcept { return object_; }

    std::string objectIdentifier() const;            // its address in decimal
    std::string_view className() const;              // without its module; "" for nil
    bool isKindOf(std::string_view className) const; // also of a class made at run time below it
    bool isClass() const;                            // its class bears its own name, and yet it is of no kind

    std::string customName() const; // "" unless set
    bool logEnabled() const;        // unless switched off

    std::optional<std::string> text(Message message) const;
    std::optional<std::string> text(Message message, std::int64_t index) const;
    bool truth(Message message) const; // false where absent
    std::optional<std::int64_t> integer(Message message) const;
    std::optional<double> doubleValue(Message message) const;
    std::optional<float> floatValue(Message message) const;
    std::optional<double> timeIntervalSince1970(Message message) const;
    PlatformObject object(Message message) const;                     // nil where absent
    PlatformObject object(Message message, ObjectRef argument) const; // nil for a nil argument, too
    PlatformObject object(Message message, Point argument) const;
    std::optional<Point> point(Message message, ObjectRef argument) const;

    const CapturePlatform& platform() const noexcept { return *platform_; }

private:
    SelectorRef selector(Message message) const noexcept { return platform_->vocabulary.selector(message); }

    const CapturePlatform* platform_;
    ObjectRef object_;
};

// A class's name without the module that may stand before it.
std::string_view unqualifiedName(std::string_view className) noexcept;

// Calls block(ClassRef) for the class and each of its superclasses, until one gives true.
template <class Block>
bool anyClassOf(ObjectiveCRuntime& runtime, ClassRef first, Block&& block) {
    for (auto one = first; one; one = runtime.class_getSuperclass(one))
        if (block(one)) return true;
    return false;
}

} // namespace tallyfoot
