#include "ObjC/ObjCHost.h"

#include "Tallyfoot/Tallyfoot.h"

#import <UIKit/UIKit.h>
#include <gmock/gmock.h>

#include <thread>

namespace {

using namespace tallyfoot::testing;
using ::testing::HasSubstr;

class ScreenSize : public ObjCHost {
protected:
    // As the console shows the device beside an event.
    static std::string shown() {
        Tallyfoot.showOutput = YES;
        ::testing::internal::CaptureStdout();
        [Tallyfoot logEvent:EventTypeAction attributes:@{@"evtLabel" : @"Buy"} customAttributes:nil];
        return ::testing::internal::GetCapturedStdout();
    }

    static void turn() { [UIScreen mainScreen].bounds = CGRectMake(0, 0, 844.9, 390.9); }
};

TEST_F(ScreenSize, IsTheMainScreensFromTheStart) {
    start();
    EXPECT_THAT(shown(), HasSubstr("deviceScrnDim: 320-568"));
}

TEST_F(ScreenSize, FollowsADeviceThatIsTurnedWhenTheNextScreenAppears) {
    start();
    turn();
    [[[[UIViewController alloc] init] autorelease] viewWillAppear:NO];
    EXPECT_THAT(shown(), HasSubstr("deviceScrnDim: 844-390"));
}

TEST_F(ScreenSize, IsNotAskedForFromAnotherThread) {
    start();
    turn();
    std::thread([] {
        @autoreleasepool {
            [Tallyfoot configure:nil ignoreClasses:@[] authenticationClosure:nil];
        }
    }).join();
    EXPECT_THAT(shown(), HasSubstr("deviceScrnDim: 320-568"));
}

} // namespace
