#pragma once

#include "Tallyfoot/Capture/ObjectiveCRuntime.h"

#import <Foundation/Foundation.h>

namespace tallyfoot::objc {

// What is attached to an object, for as long as the object lives. Any thread.
AssociatedValue associatedValue(id object, const void* key);
void setAssociatedValue(id object, const void* key, const AssociatedValue& value);

} // namespace tallyfoot::objc
