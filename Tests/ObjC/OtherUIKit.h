#pragma once

#include "ObjC/ObjCHost.h"

#include <objc/runtime.h>

#include <atomic>
#include <string>

namespace tallyfoot::testing {

// A UIKit that is made at run time, class by class, as a test wants it: of what nobody has written down,
// a platform may do what it likes. Each test is a process of its own.
class ObjCOtherUIKit : public ObjCHost {
protected:
    // Below NSObject unless said otherwise.
    static Class make(const char* name, const char* superclass = "NSObject");

    // A function without captures, whose arguments are as the types say.
    template <class Body>
    static void add(const char* className, const char* selector, const char* types, Body body) {
        class_addMethod(objc_lookUpClass(className), sel_registerName(selector), reinterpret_cast<IMP>(+body), types);
    }

    static id object(const char* className); // autoreleased

    // The one application, which counts the actions that are delivered. To be made before start().
    static void makeApplication();
    static std::atomic<int> delivered;
    static bool act(id sender, const char* action = "act:");

    // A button that answers its title, to start with.
    static void makeButton(id (*title)(id, SEL));
};

} // namespace tallyfoot::testing
