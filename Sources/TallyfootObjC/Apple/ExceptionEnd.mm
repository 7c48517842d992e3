// Objective-C's exceptions are C++'s here: the runtime's own handler of std::terminate tells the one kind
// from the other, calls the handler of uncaught exceptions for its own and then aborts.

#include "TallyfootObjC/Binding/UncaughtExceptions.h"

namespace tallyfoot::objc {

bool exceptionsEndInTerminate() { return true; }

} // namespace tallyfoot::objc
