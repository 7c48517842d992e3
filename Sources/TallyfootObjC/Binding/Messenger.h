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

} // namespace tallyfoot::objc
