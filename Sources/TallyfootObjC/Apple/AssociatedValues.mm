// Through the runtime, which has them.

#include "TallyfootObjC/Binding/AssociatedValues.h"

#include "TallyfootObjC/Support/Text.h"

#include <objc/runtime.h>

namespace tallyfoot::objc {

namespace {

id boxed(const AssociatedValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return string(*text);
    if (const auto* truth = std::get_if<bool>(&value)) return [NSNumber numberWithBool:*truth ? YES : NO];
    return nil;
}

} // namespace

AssociatedValue associatedValue(id object, const void* key) {
    id value = objc_getAssociatedObject(object, key);
    if (isText(value)) return text(value);
    if ([value isKindOfClass:[NSNumber class]]) return static_cast<bool>([value boolValue]);
    return {};
}

void setAssociatedValue(id object, const void* key, const AssociatedValue& value) {
    objc_setAssociatedObject(object, key, boxed(value), OBJC_ASSOCIATION_COPY_NONATOMIC);
}

} // namespace tallyfoot::objc
