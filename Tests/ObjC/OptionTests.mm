#include "ObjC/ObjCHost.h"
#import "TallyfootObjC/TallyfootUIKit.h"

#include <algorithm>
#include <array>

namespace {

using namespace tallyfoot::testing;

using ObjCOptions = ObjCHost;

NSArray* objects() {
    return @[
        [[[UIView alloc] initWithFrame:CGRectZero] autorelease], [[[UIViewController alloc] init] autorelease],
        [[[UIBarButtonItem alloc] init] autorelease],
        [[[UITapGestureRecognizer alloc] initWithTarget:nil action:NULL] autorelease]
    ];
}

TEST_F(ObjCOptions, HaveTheirDefaultsWhereNeverSet) {
    for (UIView* object in objects()) {
        EXPECT_TRUE([object.customName isEqual:@""]);
        EXPECT_TRUE(object.logEnabled);
    }
}

TEST_F(ObjCOptions, KeepWhatIsSet) {
    for (UIView* object in objects()) {
        object.customName = @"Näme";
        object.logEnabled = NO;
        EXPECT_TRUE([object.customName isEqual:@"Näme"]);
        EXPECT_FALSE(object.logEnabled);
        object.customName = nil;
        object.logEnabled = YES;
        EXPECT_TRUE([object.customName isEqual:@""]);
        EXPECT_TRUE(object.logEnabled);
    }
}

TEST(ObjCOptionsAlone, AreThereBeforeTheLibraryIsUsed) {
    @autoreleasepool {
        UIView* view = [[[UIView alloc] initWithFrame:CGRectZero] autorelease];
        view.customName = @"early";
        EXPECT_TRUE([view.customName isEqual:@"early"]);
    }
}

TEST_F(ObjCOptions, GoWithTheirObject) {
    std::array<void*, 64> addresses;
    for (auto& address : addresses) {
        UIButton* button = [[UIButton alloc] initWithFrame:CGRectZero];
        address = button;
        button.customName = @"gone";
        button.logEnabled = NO;
        [button release];
    }
    int reused = 0;
    for (int i = 0; i < 64; ++i) {
        UIButton* button = [[UIButton alloc] initWithFrame:CGRectZero];
        reused += std::find(addresses.begin(), addresses.end(), (void*)button) != addresses.end();
        EXPECT_TRUE([button.customName isEqual:@""]);
        EXPECT_TRUE(button.logEnabled);
        [button release];
    }
    EXPECT_GT(reused, 0); // else nothing was tried
}

TEST_F(ObjCOptions, OfAnotherTypeReadAsDefaults) {
    UIView* view = [[[UIView alloc] initWithFrame:CGRectZero] autorelease];
    view.customName = (NSString*)@7;
    EXPECT_TRUE([view.customName isEqual:@""]);
}

} // namespace
