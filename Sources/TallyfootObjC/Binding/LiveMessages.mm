#include "TallyfootObjC/Binding/LiveMessages.h"

#include "TallyfootObjC/Binding/CallStack.h"
#include "TallyfootObjC/Binding/LiveObjects.h"
#include "TallyfootObjC/Binding/Messenger.h"
#include "TallyfootObjC/Binding/MethodTypes.h"
#include "TallyfootObjC/Support/Guard.h"
#include "TallyfootObjC/Support/Text.h"

#include "Tallyfoot/Platform/FunctionRef.h"

#include <array>
#include <string>

namespace tallyfoot::objc {

namespace {

// As the platform's points lie in memory; its own type's name differs from system to system.
struct PlatformPoint {
    CGFloat x;
    CGFloat y;
};

struct PlatformRectangle {
    PlatformPoint origin;
    CGFloat width;
    CGFloat height;
};

bool isObject(std::string_view type) { return type.starts_with('@'); }

bool isInteger(std::string_view type) {
    return type.size() == 1 && std::string_view("cCsSiIlLqQ").find(type.front()) != std::string_view::npos;
}

// A structure's type is its name, and what it is made of behind "=".
bool isPoint(std::string_view type) {
    const std::string_view own = @encode(PlatformPoint);
    const auto members = type.find('=');
    return type.starts_with('{') && members != std::string_view::npos
           && type.substr(members) == own.substr(own.find('='));
}

// Two structures in one, whose names say nothing: only what they are made of.
bool isRectangle(std::string_view type) {
    const std::string members = std::string("=") + @encode(CGFloat) + @encode(CGFloat) + "}";
    const auto first = type.find(members);
    const auto second = first == std::string_view::npos ? first : type.find(members, first + members.size());
    return type.starts_with('{') && second != std::string_view::npos && type.substr(second + members.size()) == "}";
}

std::optional<std::int64_t> sendForInteger(id object, SEL selector, std::string_view type) {
    if (type.size() != 1) return std::nullopt;
    switch (type.front()) {
    case 'B': return send<bool>(object, selector);
    case 'c': return send<signed char>(object, selector);
    case 'C': return send<unsigned char>(object, selector);
    case 's': return send<short>(object, selector);
    case 'S': return send<unsigned short>(object, selector);
    case 'i':
    case 'l': return send<int>(object, selector); // "l" has 32 bits, whatever a long has
    case 'I':
    case 'L': return send<unsigned>(object, selector);
    case 'q': return send<std::int64_t>(object, selector);
    case 'Q': return static_cast<std::int64_t>(send<std::uint64_t>(object, selector));
    default: return std::nullopt;
    }
}

// In whatever type it comes.
template <class Number>
std::optional<Number> sendForNumber(id object, SEL selector, std::string_view type) {
    if (type == "f") return static_cast<Number>(send<float>(object, selector));
    if (type == "d") return static_cast<Number>(send<double>(object, selector));
    const auto integer = sendForInteger(object, selector, type);
    return integer ? std::optional(static_cast<Number>(*integer)) : std::nullopt;
}

// Asks with nothing that the object raises reaching the caller; nothing then.
template <class Value, class Block>
Value ask(ObjectRef object, SelectorRef selector, Block&& block) {
    Value value{};
    if (object && selector)
        guarded([&] { block(live(object), live(selector), MethodTypes(live(object), live(selector)), value); });
    return value;
}

// The object that it answers, borrowed.
id answer(id object, SEL selector, const MethodTypes& types) {
    return isObject(types.result()) ? send<id>(object, selector) : nil;
}

// What is raised at a message that an object does not recognize. Each platform has its own wording, and
// GNUstep's Foundation another one for invocations.
bool isAboutUnrecognized(NSException* exception, SEL selector) {
    if (![[exception name] isEqual:NSInvalidArgumentException]) return false;
    const auto contains = [reason = [exception reason]](NSString* part) {
        return reason != nil && [reason rangeOfString:part].location != NSNotFound;
    };
    return contains(NSStringFromSelector(selector))
           && (contains(@"recogniz") || contains(@"Can not determine type information"));
}

void callWithObjects(IMP implementation, id object, SEL selector, std::span<const ObjectRef> arguments) {
    const auto at = [&](std::size_t index) { return live(arguments[index]); };
    switch (arguments.size()) {
    case 0: return reinterpret_cast<void (*)(id, SEL)>(implementation)(object, selector);
    case 1: return reinterpret_cast<void (*)(id, SEL, id)>(implementation)(object, selector, at(0));
    case 2: return reinterpret_cast<void (*)(id, SEL, id, id)>(implementation)(object, selector, at(0), at(1));
    default:
        return reinterpret_cast<void (*)(id, SEL, id, id, id)>(implementation)(object, selector, at(0), at(1), at(2));
    }
}

void passOn(id receiver, SEL selector, std::span<const ObjectRef> arguments) {
    id const named = [receiver respondsToSelector:@selector(forwardingTargetForSelector:)]
                         ? [receiver forwardingTargetForSelector:selector]
                         : nil;
    if (named != nil && named != receiver)
        return callWithObjects(messenger(named, selector), named, selector, arguments);

    const std::string types = "v@:" + std::string(arguments.size(), '@');
    NSInvocation* invocation =
        [NSInvocation invocationWithMethodSignature:[NSMethodSignature signatureWithObjCTypes:types.c_str()]];
    [invocation setTarget:receiver];
    [invocation setSelector:selector];
    NSInteger index = 2;
    for (const auto argument : arguments) {
        id passed = live(argument);
        [invocation setArgument:&passed atIndex:index++];
    }
    [receiver forwardInvocation:invocation];
}

} // namespace

// --- Asking

std::optional<std::string> LiveMessages::text(ObjectRef object, SelectorRef selector) {
    return ask<std::optional<std::string>>(object, selector,
                                           [](id asked, SEL message, const MethodTypes& types, auto& value) {
                                               value = optionalText(answer(asked, message, types));
                                           });
}

std::optional<std::string> LiveMessages::text(ObjectRef object, SelectorRef selector, std::int64_t index) {
    return ask<std::optional<std::string>>(
        object, selector, [index](id asked, SEL message, const MethodTypes& types, auto& value) {
            if (isObject(types.result()) && isInteger(types.argument(0)))
                value = optionalText(send<id>(asked, message, static_cast<NSInteger>(index)));
        });
}

std::optional<bool> LiveMessages::truth(ObjectRef object, SelectorRef selector) {
    const auto value = integer(object, selector);
    return value ? std::optional(*value != 0) : std::nullopt;
}

std::optional<std::int64_t> LiveMessages::integer(ObjectRef object, SelectorRef selector) {
    return ask<std::optional<std::int64_t>>(object, selector,
                                            [](id asked, SEL message, const MethodTypes& types, auto& value) {
                                                value = sendForInteger(asked, message, types.result());
                                            });
}

std::optional<double> LiveMessages::doubleValue(ObjectRef object, SelectorRef selector) {
    return ask<std::optional<double>>(object, selector,
                                      [](id asked, SEL message, const MethodTypes& types, auto& value) {
                                          value = sendForNumber<double>(asked, message, types.result());
                                      });
}

std::optional<float> LiveMessages::floatValue(ObjectRef object, SelectorRef selector) {
    return ask<std::optional<float>>(object, selector,
                                     [](id asked, SEL message, const MethodTypes& types, auto& value) {
                                         value = sendForNumber<float>(asked, message, types.result());
                                     });
}

std::optional<double> LiveMessages::timeIntervalSince1970(ObjectRef object, SelectorRef selector) {
    return ask<std::optional<double>>(object, selector,
                                      [](id asked, SEL message, const MethodTypes& types, auto& value) {
                                          id date = answer(asked, message, types);
                                          if ([date isKindOfClass:[NSDate class]]) value = [date timeIntervalSince1970];
                                      });
}

ObjectRef LiveMessages::object(ObjectRef object, SelectorRef selector) {
    return ask<ObjectRef>(object, selector, [](id asked, SEL message, const MethodTypes& types, auto& value) {
        value = reference(answer(asked, message, types));
    });
}

ObjectRef LiveMessages::object(ObjectRef object, SelectorRef selector, ObjectRef argument) {
    return ask<ObjectRef>(object, selector, [argument](id asked, SEL message, const MethodTypes& types, auto& value) {
        if (isObject(types.result()) && isObject(types.argument(0)))
            value = reference(send<id>(asked, message, live(argument)));
    });
}

ObjectRef LiveMessages::object(ObjectRef object, SelectorRef selector, Point argument) {
    return ask<ObjectRef>(object, selector, [argument](id asked, SEL message, const MethodTypes& types, auto& value) {
        const PlatformPoint point{static_cast<CGFloat>(argument.x), static_cast<CGFloat>(argument.y)};
        if (isObject(types.result()) && isPoint(types.argument(0))) value = reference(send<id>(asked, message, point));
    });
}

std::optional<Point> LiveMessages::point(ObjectRef object, SelectorRef selector, ObjectRef argument) {
    return ask<std::optional<Point>>(object, selector,
                                     [argument](id asked, SEL message, const MethodTypes& types, auto& value) {
                                         if (!isPoint(types.result()) || !isObject(types.argument(0))) return;
                                         const auto point = send<PlatformPoint>(asked, message, live(argument));
                                         value = Point{static_cast<double>(point.x), static_cast<double>(point.y)};
                                     });
}

std::size_t LiveMessages::count(ObjectRef array) {
    return guardedValue<std::size_t>([&]() -> std::size_t {
        return [live(array) isKindOfClass:[NSArray class]] ? [(NSArray*)live(array) count] : 0;
    });
}

ObjectRef LiveMessages::objectAtIndex(ObjectRef array, std::size_t index) {
    return guardedValue<ObjectRef>([&] {
        NSArray* elements = live(array);
        const bool isThere = [elements isKindOfClass:[NSArray class]] && index < [elements count];
        return isThere ? reference([elements objectAtIndex:index]) : ObjectRef{};
    });
}

// --- Telling

void LiveMessages::objc_msgSend(ObjectRef object, SelectorRef selector, std::span<const ObjectRef> arguments) {
    if (object && selector)
        callWithObjects(messenger(live(object), live(selector)), live(object), live(selector), arguments);
}

void LiveMessages::call(ImplementationRef implementation, ObjectRef object, SelectorRef selector,
                        std::span<const ObjectRef> arguments) {
    if (object && implementation) callWithObjects(live(implementation), live(object), live(selector), arguments);
}

void LiveMessages::forwardInvocation(ObjectRef object, SelectorRef selector, std::span<const ObjectRef> arguments) {
    if (!object || !selector) return;
    @try {
        passOn(live(object), live(selector), arguments);
    } @catch (NSException* exception) {
        // Raised by the object itself, or by one that it passes messages on to without asking first.
        if (!isAboutUnrecognized(exception, live(selector))) @throw;
    }
}

bool LiveMessages::respondsToSelector(ObjectRef object, SelectorRef selector) {
    return selector && guardedValue<bool>([&] { return [live(object) respondsToSelector:live(selector)] != NO; });
}

void LiveMessages::addTarget(ObjectRef recognizer, ObjectRef target, SelectorRef action) {
    const SEL message = @selector(addTarget:action:);
    if (recognizer && [live(recognizer) respondsToSelector:message])
        send<void>(live(recognizer), message, live(target), live(action));
}

bool LiveMessages::callStackSymbolsContain(std::string_view marker) {
    return guardedValue<bool>([&] { return callStackContains(marker); });
}

std::optional<ScreenBounds> LiveMessages::mainScreenBounds() {
    const ObjectRef screens{(void*)objc_lookUpClass("UIScreen")};
    const auto screen = object(screens, reference(@selector(mainScreen)));
    return ask<std::optional<ScreenBounds>>(screen, reference(@selector(bounds)),
                                            [](id asked, SEL message, const MethodTypes& types, auto& value) {
                                                if (!isRectangle(types.result())) return;
                                                const auto bounds = sendForStructure<PlatformRectangle>(asked, message);
                                                value = ScreenBounds{bounds.width, bounds.height};
                                            });
}

} // namespace tallyfoot::objc
