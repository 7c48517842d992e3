#pragma once

#include <objc/runtime.h>

namespace tallyfoot::objc {

// After a method's implementation was changed: for the class that has it and for all its subclasses.
void updateDispatchTables(Method method);

} // namespace tallyfoot::objc
