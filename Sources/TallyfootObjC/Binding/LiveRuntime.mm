#include "TallyfootObjC/Binding/LiveRuntime.h"

#include "TallyfootObjC/Binding/AssociatedValues.h"
#include "TallyfootObjC/Binding/DispatchTables.h"
#include "TallyfootObjC/Binding/LiveObjects.h"
#include "TallyfootObjC/Support/Guard.h"

namespace tallyfoot::objc {

ClassRef LiveRuntime::objc_getClass(const char* name) {
    return name ? reference(objc_lookUpClass(name))
                : ClassRef{}; // the other one asks around for a class that is missing
}

const char* LiveRuntime::class_getName(ClassRef aClass) { return aClass ? ::class_getName(live(aClass)) : ""; }

ClassRef LiveRuntime::class_getSuperclass(ClassRef aClass) {
    return aClass ? reference(::class_getSuperclass(live(aClass))) : ClassRef{};
}

SelectorRef LiveRuntime::sel_registerName(const char* name) { return reference(::sel_registerName(name)); }

const char* LiveRuntime::sel_getName(SelectorRef selector) { return selector ? ::sel_getName(live(selector)) : ""; }

MethodRef LiveRuntime::class_getInstanceMethod(ClassRef aClass, SelectorRef selector) {
    return aClass && selector ? reference(::class_getInstanceMethod(live(aClass), live(selector))) : MethodRef{};
}

bool LiveRuntime::class_respondsToSelector(ClassRef aClass, SelectorRef selector) {
    return aClass && selector && ::class_respondsToSelector(live(aClass), live(selector));
}

bool LiveRuntime::class_addMethod(ClassRef aClass, SelectorRef selector, ImplementationRef implementation,
                                  const char* types) {
    return aClass && selector && implementation
           && ::class_addMethod(live(aClass), live(selector), live(implementation), types);
}

ImplementationRef LiveRuntime::class_replaceMethod(ClassRef aClass, SelectorRef selector,
                                                   ImplementationRef implementation, const char* types) {
    // In these two steps, because GCC's own operation would replace an inherited method where it is defined.
    if (!aClass || !selector || !implementation || class_addMethod(aClass, selector, implementation, types)) return {};
    return method_setImplementation(class_getInstanceMethod(aClass, selector), implementation);
}

ImplementationRef LiveRuntime::method_getImplementation(MethodRef method) {
    return method ? reference(::method_getImplementation(live(method))) : ImplementationRef{};
}

const char* LiveRuntime::method_getTypeEncoding(MethodRef method) {
    return method ? ::method_getTypeEncoding(live(method)) : "";
}

ImplementationRef LiveRuntime::method_setImplementation(MethodRef method, ImplementationRef implementation) {
    if (!method || !implementation) return {};
    const auto former = reference(::method_setImplementation(live(method), live(implementation)));
    if (!(former == implementation)) updateDispatchTables(live(method));
    return former;
}

void LiveRuntime::method_exchangeImplementations(MethodRef one, MethodRef other) {
    if (!one || !other) return;
    ::method_exchangeImplementations(live(one), live(other));
    updateDispatchTables(live(one));
    updateDispatchTables(live(other));
}

ClassRef LiveRuntime::object_getClass(ObjectRef object) {
    return object ? reference(::object_getClass(live(object))) : ClassRef{};
}

ClassRef LiveRuntime::class_(ObjectRef object) {
    ClassRef answer;
    guarded([&] { answer = reference((Class)[live(object) class]); });
    return answer;
}

ClassRef LiveRuntime::classForCoder(ObjectRef object) {
    ClassRef answer;
    guarded([&] {
        if ([live(object) respondsToSelector:@selector(classForCoder)])
            answer = reference([live(object) classForCoder]);
    });
    return answer;
}

AssociatedValue LiveRuntime::objc_getAssociatedObject(ObjectRef object, const void* key) {
    return object ? associatedValue(live(object), key) : AssociatedValue{};
}

void LiveRuntime::objc_setAssociatedObject(ObjectRef object, const void* key, const AssociatedValue& value) {
    if (object) guarded([&] { setAssociatedValue(live(object), key, value); });
}

void LiveRuntime::objc_retain(ObjectRef object) { [live(object) retain]; }

void LiveRuntime::objc_release(ObjectRef object) { [live(object) release]; }

void* LiveRuntime::objc_autoreleasePoolPush() { return [[NSAutoreleasePool alloc] init]; }

void LiveRuntime::objc_autoreleasePoolPop(void* pool) { [(NSAutoreleasePool*)pool drain]; }

} // namespace tallyfoot::objc
