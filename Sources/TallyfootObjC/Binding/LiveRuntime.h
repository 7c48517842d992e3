#pragma once

#include "Tallyfoot/Capture/ObjectiveCRuntime.h"

namespace tallyfoot::objc {

// The runtime of this process. Where GCC's differs from Apple's, it makes up for it: see the folder GNUstep.
class LiveRuntime final : public ObjectiveCRuntime {
public:
    ClassRef objc_getClass(const char* name) override;
    const char* class_getName(ClassRef) override;
    ClassRef class_getSuperclass(ClassRef) override;
    SelectorRef sel_registerName(const char* name) override;
    const char* sel_getName(SelectorRef) override;

    MethodRef class_getInstanceMethod(ClassRef, SelectorRef) override;
    bool class_respondsToSelector(ClassRef, SelectorRef) override;
    bool class_addMethod(ClassRef, SelectorRef, ImplementationRef, const char* types) override;
    ImplementationRef class_replaceMethod(ClassRef, SelectorRef, ImplementationRef, const char* types) override;
    ImplementationRef method_getImplementation(MethodRef) override;
    const char* method_getTypeEncoding(MethodRef) override;
    ImplementationRef method_setImplementation(MethodRef, ImplementationRef) override;
    void method_exchangeImplementations(MethodRef, MethodRef) override;

    ClassRef object_getClass(ObjectRef) override;
    ClassRef class_(ObjectRef) override;
    ClassRef classForCoder(ObjectRef) override;

    AssociatedValue objc_getAssociatedObject(ObjectRef, const void* key) override;
    void objc_setAssociatedObject(ObjectRef, const void* key, const AssociatedValue&) override;

    void objc_retain(ObjectRef) override;
    void objc_release(ObjectRef) override;
    void* objc_autoreleasePoolPush() override;
    void objc_autoreleasePoolPop(void* pool) override;
};

} // namespace tallyfoot::objc
