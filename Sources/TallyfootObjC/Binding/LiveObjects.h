#pragma once

#include "Tallyfoot/Capture/References.h"

#import <Foundation/Foundation.h>
#include <objc/runtime.h>

// The platform's own pointers in the words of the library, and back.
namespace tallyfoot::objc {

using Implementation = void (*)(); // what an IMP is without its arguments

inline ObjectRef reference(id object) noexcept { return {(void*)object}; }
inline ClassRef reference(Class aClass) noexcept { return {(void*)aClass}; }
inline MethodRef reference(Method method) noexcept { return {(void*)method}; }
inline SelectorRef reference(SEL selector) noexcept { return {(void*)selector}; }
inline ImplementationRef reference(IMP implementation) noexcept {
    return {reinterpret_cast<Implementation>(implementation)};
}

inline id live(ObjectRef object) noexcept { return (id)object.pointer; }
inline Class live(ClassRef aClass) noexcept { return (Class)aClass.pointer; }
inline Method live(MethodRef method) noexcept { return (Method)method.pointer; }
inline SEL live(SelectorRef selector) noexcept { return (SEL)selector.pointer; }
inline IMP live(ImplementationRef implementation) noexcept { return reinterpret_cast<IMP>(implementation.function); }

} // namespace tallyfoot::objc
