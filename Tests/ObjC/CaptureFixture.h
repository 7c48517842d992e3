#pragma once

#include "ObjC/ObjCHost.h"
#import "TallyfootObjC/TallyfootUIKit.h"
#include "UIKitDouble/Tests/Probe.h"

namespace tallyfoot::testing {

// A host that is switched on, and a user's finger.
class ObjCCapture : public ObjCHost {
protected:
    ObjCCapture() { start(); }

    Probe* probe_ = [Probe probe];
    UIView* view_ = [[[UIView alloc] initWithFrame:CGRectMake(0, 0, 320, 480)] autorelease];
};

} // namespace tallyfoot::testing
