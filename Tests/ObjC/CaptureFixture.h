#pragma once

#include "ObjC/ObjCHost.h"
#import "TallyfootObjC/TallyfootUIKit.h"
#include "UIKitDouble/Tests/Probe.h"

#include <string>

namespace tallyfoot::testing {

// A host that is switched on, and a user's finger.
class ObjCCapture : public ObjCHost {
protected:
    ObjCCapture() { start(); }

    // What was recorded since the last time: "type category action label", joined with "; ". What an
    // event lacks is left out.
    std::string recorded();

    Probe* probe_ = [Probe probe];
    UIView* view_ = [[[UIView alloc] initWithFrame:CGRectMake(0, 0, 320, 480)] autorelease];

private:
    std::size_t seen_ = 0;
};

} // namespace tallyfoot::testing
