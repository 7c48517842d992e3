#include "ObjC/ObjCHost.h"
#include "TallyfootObjC/Binding/AssociatedValues.h"
#import "TallyfootObjC/TallyfootUIKit.h"

#include "Tallyfoot/Capture/CustomOptions.h"

#include <objc/runtime.h>

#include <atomic>
#include <barrier>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace tallyfoot::testing;
using tallyfoot::AssociatedValue;
using tallyfoot::CustomOptions;
using tallyfoot::objc::associatedValue;
using tallyfoot::objc::setAssociatedValue;

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

void deallocAsTheRoot(id self, SEL selector) {
    reinterpret_cast<void (*)(id, SEL)>([NSObject instanceMethodForSelector:selector])(self, selector);
}

// Below another one, with an end of its own, whose objects have had no options until then.
Class classWithoutOptions(int number) {
    const std::string name = "WithoutOptions" + std::to_string(number);
    const Class above = objc_allocateClassPair([NSObject class], ("Above" + name).c_str(), 0);
    objc_registerClassPair(above);
    class_addMethod(above, @selector(dealloc), reinterpret_cast<IMP>(deallocAsTheRoot), "v@:");
    const Class made = objc_allocateClassPair(above, name.c_str(), 0);
    objc_registerClassPair(made);
    [[[made alloc] init] release]; // the runtime knows now what its objects do at their end
    return made;
}

TEST_F(ObjCOptions, GoWithTheirObjectsWhereTwoThreadsSetTheFirst) {
    std::vector<Class> classes;
    for (int number = 0; number < 20; ++number) classes.push_back(classWithoutOptions(number));
    std::barrier<> meeting(2);
    std::atomic<int> left = 0;
    const auto work = [&] {
        for (Class one : classes) {
            id const object = [[one alloc] init];
            meeting.arrive_and_wait();
            setAssociatedValue(object, CustomOptions::logEnabledKey(), false);
            [object release];
            meeting.arrive_and_wait(); // neither sets another one until both have looked
            if (associatedValue(object, CustomOptions::logEnabledKey()) != AssociatedValue()) ++left;
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(left, 0);
}

TEST_F(ObjCOptions, OfAnotherTypeReadAsDefaults) {
    UIView* view = [[[UIView alloc] initWithFrame:CGRectZero] autorelease];
    view.customName = (NSString*)@7;
    EXPECT_TRUE([view.customName isEqual:@""]);
}

} // namespace
