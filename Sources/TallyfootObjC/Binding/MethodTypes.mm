#include "TallyfootObjC/Binding/MethodTypes.h"

#include <objc/runtime.h>

namespace tallyfoot::objc {

namespace {

// "const", "in", "out", "bycopy" and the like stand before a type.
const char* unqualified(const char* types) {
    while (*types != '\0' && std::string_view("rnNoORVA").find(*types) != std::string_view::npos) ++types;
    return types;
}

const char* endOfType(const char* types) {
    types = unqualified(types);
    if (*types == '^') return endOfType(types + 1);
    int depth = 0;
    do {
        if (*types == '{' || *types == '(' || *types == '[') ++depth;
        if (*types == '}' || *types == ')' || *types == ']') --depth;
        if (*types == '\0') return types;
        ++types;
    } while (depth > 0);
    if (types[-1] == '@' && *types == '?') ++types; // a block
    return types;
}

// Behind a type stands the place where it is passed.
const char* endOfPlace(const char* types) {
    while ((*types >= '0' && *types <= '9') || *types == '-' || *types == '+') ++types;
    return types;
}

std::string_view firstType(const char* types) {
    const char* const begin = unqualified(types);
    return {begin, static_cast<std::size_t>(endOfType(begin) - begin)};
}

} // namespace

MethodTypes::MethodTypes(id object, SEL selector) {
    if (const Method method = class_getInstanceMethod(object_getClass(object), selector)) {
        types_ = method_getTypeEncoding(method);
        if (types_ != nullptr) result_ = firstType(types_);
    } else if ([object respondsToSelector:selector]) {
        signature_ = [object methodSignatureForSelector:selector];
        if (signature_ != nil) result_ = firstType([signature_ methodReturnType]);
    }
}

std::string_view MethodTypes::argument(unsigned index) const {
    index += 2;
    if (signature_ != nil)
        return index < [signature_ numberOfArguments] ? firstType([signature_ getArgumentTypeAtIndex:index])
                                                      : std::string_view();
    if (types_ == nullptr) return {};
    const char* types = endOfPlace(endOfType(types_));
    for (; index > 0; --index) types = endOfPlace(endOfType(types));
    return firstType(types);
}

} // namespace tallyfoot::objc
