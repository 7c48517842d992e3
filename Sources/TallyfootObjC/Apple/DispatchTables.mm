#include "TallyfootObjC/Binding/DispatchTables.h"

namespace tallyfoot::objc {

void updateDispatchTables(Method) {} // the runtime has done it

} // namespace tallyfoot::objc
