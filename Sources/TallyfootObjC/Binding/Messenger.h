#pragma once

#import <Foundation/Foundation.h>

namespace tallyfoot::objc {

// What to call for this message to this object.
IMP messenger(id object, SEL selector);

template <class Result, class... Arguments>
Result send(id object, SEL selector, Arguments... arguments) {
    return reinterpret_cast<Result (*)(id, SEL, Arguments...)>(messenger(object, selector))(object, selector,
                                                                                            arguments...);
}

// The same for a structure that is handed back in memory, which some processors' messengers must know.
IMP structureMessenger(id object, SEL selector);

template <class Structure>
Structure sendForStructure(id object, SEL selector) {
    static_assert(sizeof(Structure) > 2 * sizeof(void*), "a small one may come back in registers");
    return reinterpret_cast<Structure (*)(id, SEL)>(structureMessenger(object, selector))(object, selector);
}

} // namespace tallyfoot::objc
