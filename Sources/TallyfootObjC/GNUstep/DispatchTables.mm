// GCC's runtime copies a class's dispatch table from its superclass's when the class is first messaged,
// and brings only the changed class's own up to date when an implementation is set or exchanged.

#include "TallyfootObjC/Binding/DispatchTables.h"

#include "TallyfootObjC/GNUstep/AllClasses.h"

#include <cstdlib>

// The runtime's own, for a class and all below it; exported, though no header says so.
extern "C" void __objc_update_dispatch_table_for_class(Class aClass) __attribute__((weak));

namespace tallyfoot::objc {

namespace {

bool has(Class aClass, Method method) {
    unsigned count = 0;
    Method* const methods = class_copyMethodList(aClass, &count);
    bool isThere = false;
    for (unsigned index = 0; index < count && !isThere; ++index) isThere = methods[index] == method;
    std::free(methods);
    return isThere;
}

} // namespace

void updateDispatchTables(Method method) {
    if (__objc_update_dispatch_table_for_class == nullptr) return;
    // Their lists are read, no class is asked: it would be initialised by the question, long before its time.
    for (Class aClass : allClasses())
        if (has(aClass, method)) return __objc_update_dispatch_table_for_class(aClass);
}

} // namespace tallyfoot::objc
