// GCC's runtime calls its own handler where it has found nobody to catch. Only an exception that meets a
// C++ function which lets none pass ends in std::terminate, where nobody can ask it for its reason.

#include "TallyfootObjC/Binding/UncaughtExceptions.h"

namespace tallyfoot::objc {

bool exceptionsEndInTerminate() { return false; }

} // namespace tallyfoot::objc
