#include "TallyfootObjC/Binding/Messenger.h"

#include <objc/message.h>

namespace tallyfoot::objc {

IMP messenger(id object, SEL selector) { return objc_msg_lookup(object, selector); }

IMP structureMessenger(id object, SEL selector) { return messenger(object, selector); }

} // namespace tallyfoot::objc
