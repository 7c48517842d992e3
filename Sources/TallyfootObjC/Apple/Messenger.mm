#include "TallyfootObjC/Binding/Messenger.h"

#include <objc/message.h>

namespace tallyfoot::objc {

IMP messenger(id, SEL) { return reinterpret_cast<IMP>(objc_msgSend); }

} // namespace tallyfoot::objc
