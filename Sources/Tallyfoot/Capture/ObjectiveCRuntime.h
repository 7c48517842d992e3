#pragma once

#include "Tallyfoot/Capture/References.h"

#include <string>
#include <variant>

namespace tallyfoot {

// What is attached to an object: a text, a truth value, or nothing of these two (also an object of any
// other class).
using AssociatedValue = std::variant<std::monostate, std::string, bool>;

// The runtime's own operations, under their names and with the semantics of Apple's runtime; where a
// platform's differ, its binding makes up for it. A nil argument gives nil, false or nothing. None
// throws.
class ObjectiveCRuntime {
public:
    virtual ~ObjectiveCRuntime() = default;

    virtual ClassRef objc_getClass(const char* name) = 0; // nil without complaint where there is none
    virtual const char* class_getName(ClassRef) = 0;      // as the runtime has it: a module's name may precede a dot
    virtual ClassRef class_getSuperclass(ClassRef) = 0;
    virtual SelectorRef sel_registerName(const char* name) = 0;
    virtual const char* sel_getName(SelectorRef) = 0;

    // Inherited ones included: then it is the superclass's own method.
    virtual MethodRef class_getInstanceMethod(ClassRef, SelectorRef) = 0;
    // Whether there is one: quicker, but a class that was never messaged is initialised by the question.
    virtual bool class_respondsToSelector(ClassRef, SelectorRef) = 0;
    // False, and nothing done, if the class itself has the method; an inherited one is overridden. Both
    // keep a copy of the types.
    virtual bool class_addMethod(ClassRef, SelectorRef, ImplementationRef, const char* types) = 0;
    // Adds where it is inherited or absent (then nil comes back), and never touches a superclass. A
    // method of the class's own keeps its types.
    virtual ImplementationRef class_replaceMethod(ClassRef, SelectorRef, ImplementationRef, const char* types) = 0;
    virtual ImplementationRef method_getImplementation(MethodRef) = 0;
    virtual const char* method_getTypeEncoding(MethodRef) = 0;
    // These two change the class that has the method, for it and all its subclasses, also for those
    // that have been messaged before.
    virtual ImplementationRef method_setImplementation(MethodRef, ImplementationRef) = 0; // gives the former
    virtual void method_exchangeImplementations(MethodRef, MethodRef) = 0;

    virtual ClassRef object_getClass(ObjectRef) = 0; // a subclass made at run time, for key-value observing, included
    virtual ClassRef class_(ObjectRef) = 0;          // what the object answers to `class`: such a subclass is hidden
    virtual ClassRef classForCoder(ObjectRef) = 0;   // what it answers to `classForCoder`; nil if it does not answer

    // One process-wide key for each property; copied, not atomic (policy 3). Nothing attached: monostate;
    // attaching it removes what was there.
    virtual AssociatedValue objc_getAssociatedObject(ObjectRef, const void* key) = 0;
    virtual void objc_setAssociatedObject(ObjectRef, const void* key, const AssociatedValue&) = 0;

    virtual void objc_retain(ObjectRef) = 0;
    virtual void objc_release(ObjectRef) = 0;
    virtual void* objc_autoreleasePoolPush() = 0;
    virtual void objc_autoreleasePoolPop(void* pool) = 0;
};

} // namespace tallyfoot
