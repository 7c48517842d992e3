#include "ObjC/EarlySymbols.h"
#include "TallyfootObjC/Binding/CallStack.h"

#include <gtest/gtest.h>

namespace {

TEST(ObjCCallStack, IsBelievedFromALibraryThatCameFirst) {
    @autoreleasepool {
        using tallyfoot::objc::callStackContains;
        EXPECT_FALSE(callStackContains("UIControl touchesEnded"));
        earlySymbols = @[ @"0 Shop 0x1 main + 4", @"3 Shop 0x1 -[UIControl touchesEnded:withEvent:] + 60" ];
        EXPECT_TRUE(callStackContains("UIControl touchesEnded"));
        EXPECT_FALSE(callStackContains("UISlider continueTrackingWithTouch"));
    }
}

} // namespace
