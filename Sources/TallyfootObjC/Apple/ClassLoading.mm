#include "TallyfootObjC/Binding/ClassLoading.h"

#include "TallyfootObjC/Binding/Binding.h"

namespace tallyfoot::objc {

void prepareWithClasses() { capture().prepare(); } // the runtime knows the classes of all libraries by now

} // namespace tallyfoot::objc
