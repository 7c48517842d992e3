#include "ObjC/ObjCHost.h"
#include "TallyfootObjC/Binding/AssociatedValues.h"
#import "TallyfootObjC/TallyfootUIKit.h"

#include "Tallyfoot/Capture/CustomOptions.h"

namespace {

using namespace tallyfoot::testing;
using tallyfoot::AssociatedValue;
using tallyfoot::CustomOptions;
using tallyfoot::objc::associatedValue;

using ObjCOptions = ObjCHost;

NSArray* objects() {
    return @[
        [[[UIView alloc] initWithFrame:CGRectZero] autorelease], [[[UIViewController alloc] init] autorelease],
        [[[UIBarButtonItem alloc] init] autorelease],
        [[[UITapGestureRecognizer alloc] initWithTarget:nil action:NULL] autorelease]
    ];
}

TEST_F(ObjCOptions, HaveTheirDefaultsWhereNeverSet) {
    for (id<CustomOptionProtocol> object in objects()) {
        EXPECT_TRUE([object.customName isEqual:@""]);
        EXPECT_TRUE(object.logEnabled);
    }
}

TEST_F(ObjCOptions, KeepWhatIsSet) {
    for (id<CustomOptionProtocol> object in objects()) {
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

TEST_F(ObjCOptions, KeepACopy) {
    UIView* view = [[[UIView alloc] initWithFrame:CGRectZero] autorelease];
    NSMutableString* name = [NSMutableString stringWithString:@"Buy"];
    view.customName = name;
    [name appendString:@"er"];
    EXPECT_TRUE([view.customName isEqual:@"Buy"]);
}

TEST_F(ObjCOptions, AreSetByKeyAsAStoryboardDoes) {
    for (id object in objects()) {
        [object setValue:@"Buy" forKey:@"customName"];
        [object setValue:[NSNumber numberWithBool:NO] forKey:@"logEnabled"];
        EXPECT_TRUE([[object valueForKey:@"customName"] isEqual:@"Buy"]);
        EXPECT_FALSE([[object valueForKey:@"logEnabled"] boolValue]);
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
    UIButton* button = [[UIButton alloc] initWithFrame:CGRectZero];
    button.customName = @"gone";
    button.logEnabled = NO;
    id const address = button; // nothing looks behind it any more
    EXPECT_EQ(associatedValue(address, CustomOptions::customNameKey()), AssociatedValue("gone"));
    [button release];
    EXPECT_EQ(associatedValue(address, CustomOptions::customNameKey()), AssociatedValue());
    EXPECT_EQ(associatedValue(address, CustomOptions::logEnabledKey()), AssociatedValue());
}

TEST_F(ObjCOptions, OfAnotherTypeReadAsDefaults) {
    UIView* view = [[[UIView alloc] initWithFrame:CGRectZero] autorelease];
    view.customName = (NSString*)@7;
    EXPECT_TRUE([view.customName isEqual:@""]);
}

} // namespace
