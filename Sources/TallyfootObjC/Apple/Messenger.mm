#include "TallyfootObjC/Binding/Messenger.h"

#include <objc/message.h>

namespace tallyfoot::objc {

IMP messenger(id, SEL) { return reinterpret_cast<IMP>(objc_msgSend); }

IMP structureMessenger(id, SEL) {
#if defined(__x86_64__)
    return reinterpret_cast<IMP>(objc_msgSend_stret);
#else
    return reinterpret_cast<IMP>(objc_msgSend); // the others hand it back through a register of its own
#endif
}

} // namespace tallyfoot::objc
