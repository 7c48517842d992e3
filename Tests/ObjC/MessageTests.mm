#include "ObjC/ObjCHost.h"
#include "TallyfootObjC/Binding/LiveMessages.h"
#include "TallyfootObjC/Binding/LiveObjects.h"

#include <array>

// Answers in every way an object can.
@interface Answering : NSObject {
    NSString* _name;
}
@property(nonatomic, copy) NSString* name;
@end

@implementation Answering
@synthesize name = _name;

- (void)dealloc {
    [_name release];
    [super dealloc];
}

- (NSString*)none {
    return nil;
}

- (NSString*)raises {
    [NSException raise:@"NotNow" format:@"no"];
    return nil;
}

- (int)number {
    return -7;
}

- (NSInteger)integer {
    return 1LL << 40;
}

- (short)small {
    return -3;
}

- (BOOL)yes {
    return YES;
}

- (bool)plainTruth {
    return true;
}

- (double)fraction {
    return 0.1;
}

- (float)single {
    return 0.5F;
}

- (NSDate*)day {
    return [NSDate dateWithTimeIntervalSince1970:1.5];
}

- (void)nothing {
}

- (NSString*)titleAt:(NSUInteger)index {
    return [NSString stringWithFormat:@"title %lu", static_cast<unsigned long>(index)];
}

- (NSString*)titleFor:(id)key {
    return [key description];
}

- (NSPoint)locationIn:(id)view {
    return view ? NSMakePoint(3, 4) : NSZeroPoint;
}

- (id)at:(NSPoint)point {
    return [NSString stringWithFormat:@"%g-%g", static_cast<double>(point.x), static_cast<double>(point.y)];
}

- (NSRect)frame {
    return NSZeroRect;
}

@end

@interface Behind : NSProxy {
@public
    id behind;
}
@end

@implementation Behind

- (NSMethodSignature*)methodSignatureForSelector:(SEL)selector {
    return [behind methodSignatureForSelector:selector];
}

- (BOOL)respondsToSelector:(SEL)selector {
    return [behind respondsToSelector:selector];
}

- (void)forwardInvocation:(NSInvocation*)invocation {
    [invocation invokeWithTarget:behind];
}

@end

namespace {

using namespace tallyfoot::testing;
using tallyfoot::ObjectRef;
using tallyfoot::Point;
using tallyfoot::objc::live;
using tallyfoot::objc::reference;

class ObjCMessages : public ObjCHost {
protected:
    ObjCMessages() { object_.name = @"Näme"; }

    std::optional<std::string> text(SEL selector) { return messages_.text(reference(object_), reference(selector)); }

    tallyfoot::objc::LiveMessages messages_;
    Answering* object_ = [[[Answering alloc] init] autorelease];
};

TEST_F(ObjCMessages, AskForTexts) { EXPECT_EQ(text(@selector(name)), "Näme"); }

TEST_F(ObjCMessages, FindNothingInNilInAnotherTypeAndInWhatRaisesOrIsNotAnswered) {
    EXPECT_EQ(text(@selector(none)), std::nullopt);
    EXPECT_EQ(text(@selector(day)), std::nullopt);
    EXPECT_EQ(text(@selector(number)), std::nullopt);
    EXPECT_EQ(text(@selector(nothing)), std::nullopt);
    EXPECT_EQ(text(@selector(frame)), std::nullopt);
    EXPECT_EQ(text(@selector(raises)), std::nullopt);
    EXPECT_EQ(text(@selector(uppercaseString)), std::nullopt);
    EXPECT_EQ(messages_.text({}, reference(@selector(name))), std::nullopt);
    EXPECT_FALSE(messages_.object(reference(object_), reference(@selector(integer))));
    EXPECT_EQ(messages_.truth(reference(object_), reference(@selector(name))), std::nullopt);
    EXPECT_EQ(messages_.integer(reference(object_), reference(@selector(name))), std::nullopt);
    EXPECT_EQ(messages_.doubleValue(reference(object_), reference(@selector(name))), std::nullopt);
    EXPECT_EQ(messages_.timeIntervalSince1970(reference(object_), reference(@selector(name))), std::nullopt);
    EXPECT_EQ(messages_.point(reference(object_), reference(@selector(titleFor:)), {}), std::nullopt);
}

TEST_F(ObjCMessages, AskForNumbersInTheWidthTheyHave) {
    EXPECT_EQ(messages_.integer(reference(object_), reference(@selector(number))), -7);
    EXPECT_EQ(messages_.integer(reference(object_), reference(@selector(integer))), 1LL << 40);
    EXPECT_EQ(messages_.integer(reference(object_), reference(@selector(small))), -3);
    EXPECT_EQ(messages_.truth(reference(object_), reference(@selector(yes))), true);
    EXPECT_EQ(messages_.truth(reference(object_), reference(@selector(plainTruth))), true);
    EXPECT_EQ(messages_.doubleValue(reference(object_), reference(@selector(fraction))), 0.1);
    EXPECT_EQ(messages_.floatValue(reference(object_), reference(@selector(single))), 0.5F);
    EXPECT_EQ(messages_.doubleValue(reference(object_), reference(@selector(single))), 0.5);
    EXPECT_EQ(messages_.floatValue(reference(object_), reference(@selector(fraction))), 0.1F);
    EXPECT_EQ(messages_.doubleValue(reference(object_), reference(@selector(small))), -3);
    EXPECT_EQ(messages_.truth(reference(object_), reference(@selector(integer))), true);
    EXPECT_EQ(messages_.integer(reference(object_), reference(@selector(fraction))), std::nullopt);
    EXPECT_EQ(messages_.timeIntervalSince1970(reference(object_), reference(@selector(day))), 1.5);
}

TEST_F(ObjCMessages, PassArguments) {
    EXPECT_EQ(messages_.text(reference(object_), reference(@selector(titleAt:)), 3), "title 3");
    EXPECT_EQ(messages_.text(reference(object_), reference(@selector(titleFor:)), 3), std::nullopt); // wants an object
    EXPECT_TRUE([live(messages_.object(reference(object_), reference(@selector(titleFor:)), reference(@"key")))
        isEqual:@"key"]);
    EXPECT_EQ(messages_.point(reference(object_), reference(@selector(locationIn:)), reference(object_)),
              (Point{3, 4}));
    EXPECT_TRUE([live(messages_.object(reference(object_), reference(@selector(at:)), Point{1, 2})) isEqual:@"1-2"]);
    EXPECT_FALSE(messages_.object(reference(object_), reference(@selector(titleFor:)), Point{1, 2}));
}

TEST_F(ObjCMessages, ReadArrays) {
    NSArray* array = @[ @"a", @"b" ];
    EXPECT_EQ(messages_.count(reference(array)), 2U);
    EXPECT_EQ(messages_.objectAtIndex(reference(array), 1), reference((id) @"b"));
    EXPECT_FALSE(messages_.objectAtIndex(reference(array), 2));
    EXPECT_EQ(messages_.count(reference((id) @"ab")), 0U);
    EXPECT_EQ(messages_.count({}), 0U);
}

TEST_F(ObjCMessages, RetainNothing) {
    const NSUInteger before = [object_ retainCount];
    text(@selector(name));
    text(@selector(description));
    EXPECT_EQ([object_ retainCount], before);
}

TEST_F(ObjCMessages, ReachWhatIsBehindAProxy) {
    Behind* proxy = [Behind alloc];
    proxy->behind = object_;
    EXPECT_EQ(messages_.text(reference((id)proxy), reference(@selector(name))), "Näme");
    EXPECT_TRUE(messages_.respondsToSelector(reference((id)proxy), reference(@selector(titleAt:))));
    [proxy release];
}

TEST_F(ObjCMessages, TellWithUpToTwoObjectsAndForwardInvocations) {
    NSMutableDictionary* heard = [NSMutableDictionary dictionary];
    const std::array<ObjectRef, 2> pair{reference(@"value"), reference(@"key")};
    messages_.objc_msgSend(reference(heard), reference(@selector(setObject:forKey:)), pair);
    EXPECT_TRUE([heard isEqual:@{@"key" : @"value"}]);
    messages_.objc_msgSend({}, reference(@selector(setObject:forKey:)), pair);
    Behind* proxy = [Behind alloc];
    proxy->behind = heard;
    const std::array<ObjectRef, 1> key{reference(@"key")};
    messages_.forwardInvocation(reference((id)proxy), reference(@selector(removeObjectForKey:)), key);
    EXPECT_EQ([heard count], 0U);
    [proxy release];
}

TEST_F(ObjCMessages, LetThroughWhatATellingRaises) {
    NSString* name = nil;
    @try {
        messages_.objc_msgSend(reference(object_), reference(@selector(raises)), {});
    } @catch (NSException* exception) {
        name = [exception name];
    }
    EXPECT_TRUE([name isEqual:@"NotNow"]);
}

NSArray* otherSymbols(id, SEL) { return @[ @"3 Shop 0x1 -[UIControl touchesEnded:withEvent:] + 60" ]; }

TEST_F(ObjCMessages, BelieveAnotherAccountOfTheCallStack) {
    const Method method = class_getClassMethod([NSThread class], @selector(callStackSymbols));
    const IMP former = method_setImplementation(method, reinterpret_cast<IMP>(otherSymbols));
    EXPECT_TRUE(messages_.callStackSymbolsContain("UIControl touchesEnded"));
    EXPECT_FALSE(messages_.callStackSymbolsContain("UISlider continueTrackingWithTouch"));
    method_setImplementation(method, former);
    EXPECT_FALSE(messages_.callStackSymbolsContain("UIControl touchesEnded"));
}

TEST_F(ObjCMessages, FindNoMarkerThatIsNotOnTheCallStack) {
    EXPECT_FALSE(messages_.callStackSymbolsContain("UIControl touchesEnded"));
    EXPECT_FALSE(messages_.callStackSymbolsContain("NoSuchClass method"));
    EXPECT_FALSE(messages_.callStackSymbolsContain("nospace"));
}

} // namespace
