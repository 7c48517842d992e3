#include "Tallyfoot/Capture/PlatformObject.h"

#include <cstdint>

namespace tallyfoot {

std::string_view unqualifiedName(std::string_view className) noexcept {
    const auto dot = className.rfind('.');
    return dot == std::string_view::npos ? className : className.substr(dot + 1);
}

std::string PlatformObject::objectIdentifier() const {
    return std::to_string(reinterpret_cast<std::uintptr_t>(object_.pointer));
}

std::string_view PlatformObject::className() const {
    const auto itsClass = platform_->runtime.class_(object_);
    return itsClass ? unqualifiedName(platform_->runtime.class_getName(itsClass)) : std::string_view();
}

bool PlatformObject::isKindOf(std::string_view className) const {
    auto& runtime = platform_->runtime;
    return anyClassOf(runtime, runtime.object_getClass(object_),
                      [&](ClassRef one) { return className == runtime.class_getName(one); });
}

bool PlatformObject::isClass() const {
    return object_ && platform_->runtime.class_(object_).pointer == object_.pointer;
}

std::string PlatformObject::customName() const { return text(Message::customName).value_or(std::string()); }

bool PlatformObject::logEnabled() const {
    return !object_ || platform_->messages.truth(object_, selector(Message::logEnabled)).value_or(true);
}

std::optional<std::string> PlatformObject::text(Message message) const {
    return object_ ? platform_->messages.text(object_, selector(message)) : std::nullopt;
}

std::optional<std::string> PlatformObject::text(Message message, std::int64_t index) const {
    return object_ ? platform_->messages.text(object_, selector(message), index) : std::nullopt;
}

bool PlatformObject::truth(Message message) const {
    return object_ && platform_->messages.truth(object_, selector(message)).value_or(false);
}

std::optional<std::int64_t> PlatformObject::integer(Message message) const {
    return object_ ? platform_->messages.integer(object_, selector(message)) : std::nullopt;
}

std::optional<double> PlatformObject::doubleValue(Message message) const {
    return object_ ? platform_->messages.doubleValue(object_, selector(message)) : std::nullopt;
}

std::optional<float> PlatformObject::floatValue(Message message) const {
    return object_ ? platform_->messages.floatValue(object_, selector(message)) : std::nullopt;
}

std::optional<double> PlatformObject::timeIntervalSince1970(Message message) const {
    return object_ ? platform_->messages.timeIntervalSince1970(object_, selector(message)) : std::nullopt;
}

PlatformObject PlatformObject::object(Message message) const {
    return {*platform_, object_ ? platform_->messages.object(object_, selector(message)) : ObjectRef{}};
}

PlatformObject PlatformObject::object(Message message, ObjectRef argument) const {
    const bool isAsked = object_ && argument;
    return {*platform_, isAsked ? platform_->messages.object(object_, selector(message), argument) : ObjectRef{}};
}

PlatformObject PlatformObject::object(Message message, Point argument) const {
    return {*platform_, object_ ? platform_->messages.object(object_, selector(message), argument) : ObjectRef{}};
}

std::optional<Point> PlatformObject::point(Message message, ObjectRef argument) const {
    return object_ ? platform_->messages.point(object_, selector(message), argument) : std::nullopt;
}

} // namespace tallyfoot
