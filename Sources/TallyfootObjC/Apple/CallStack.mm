#include "TallyfootObjC/Binding/CallStack.h"

#include "TallyfootObjC/Support/Text.h"

namespace tallyfoot::objc {

bool callStackContains(std::string_view marker) {
    NSString* expected = string(marker);
    for (NSString* symbol in [NSThread callStackSymbols])
        if ([symbol rangeOfString:expected].location != NSNotFound) return true;
    return false;
}

} // namespace tallyfoot::objc
