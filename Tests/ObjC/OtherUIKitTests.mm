// That the binding relies on nothing but what the platform's classes are called and what they answer:
// here they are other ones than the stand-in's, and odd ones.
#include "ObjC/OtherUIKit.h"

#include <objc/message.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <thread>
#include <vector>

using namespace tallyfoot::testing;

// As a C function whose symbol is the method's, of a class that has no such method.
extern "C" void standInTracking(id slider) __asm__("-[UISlider continueTrackingWithTouch:andMore:]")
    __attribute__((noinline, used, visibility("default"), disable_tail_calls));

extern "C" void standInTracking(id slider) { [slider performSelector:sel_registerName("send")]; }

// One of these per row: the sender's class, one of its methods, and the event that comes of it.
struct OddAnswer {
    const char* name;
    const char* className;
    const char* selector;
    std::string types;
    IMP body;
    const char* event;
};

void PrintTo(const OddAnswer& row, std::ostream* stream) { *stream << row.name; }

namespace {

const std::string truthType = std::string(@encode(BOOL)) + "@:";

template <class Body>
IMP imp(Body body) {
    return reinterpret_cast<IMP>(+body);
}

class ObjCOddAnswers : public ObjCOtherUIKit, public ::testing::WithParamInterface<OddAnswer> {};

TEST_P(ObjCOddAnswers, LeaveTheRestOfTheEvent) {
    const auto& row = GetParam();
    makeApplication();
    const Class sender = make(row.className);
    class_addMethod(sender, sel_registerName(row.selector), row.body, row.types.c_str());
    start();
    EXPECT_TRUE(act(object(row.className)));
    EXPECT_EQ(delivered, 1);
    EXPECT_EQ(recorded(), row.event);
}

template <class Value>
Value raise(id, SEL) {
    [NSException raise:@"NotNow" format:@"no"];
    return {};
}

id none(id, SEL) { return nil; }
id number(id, SEL) { return @7; }
id null(id, SEL) { return [NSNull null]; }
id attributed(id, SEL) { return [[[NSAttributedString alloc] initWithString:@"Styled"] autorelease]; }
id mutableTitle(id, SEL) { return [NSMutableString stringWithString:@"Buy"]; }
id withNUL(id, SEL) {
    const unichar units[] = {'a', 0, 'b'};
    return [NSString stringWithCharacters:units length:3];
}
id halfACharacter(id, SEL) { return loneSurrogate(); }
id emoji(id, SEL) { return @"\U0001F6D2 caf\u00E9"; }

constexpr auto asImp = [](id (*body)(id, SEL)) { return reinterpret_cast<IMP>(body); };

const OddAnswer texts[]{
    {"NilTitle", "UIButton", "currentTitle", "@@:", asImp(none), "action UIButton tap "},
    {"RaisingTitle", "UIButton", "currentTitle", "@@:", asImp(raise<id>), "action UIButton tap "},
    {"NumberAsTitle", "UIButton", "currentTitle", "@@:", asImp(number), "action UIButton tap "},
    {"NullAsTitle", "UIButton", "currentTitle", "@@:", asImp(null), "action UIButton tap "},
    {"AttributedTitle", "UIButton", "currentTitle", "@@:", asImp(attributed), "action UIButton tap "},
    {"MutableTitle", "UIButton", "currentTitle", "@@:", asImp(mutableTitle), "action UIButton tap Buy"},
    {"EmojiTitle", "UIButton", "currentTitle", "@@:", asImp(emoji), "action UIButton tap \U0001F6D2 caf\u00E9"},
    {"HalfACharacter", "UIButton", "currentTitle", "@@:", asImp(halfACharacter), "action UIButton tap a\uFFFDb"},
    {"TitleIsAStructure", "UIButton", "currentTitle", "{_NSRect={_NSPoint=dd}{_NSSize=dd}}@:", asImp(raise<id>),
     "action UIButton tap "},
    {"TitleIsVoid", "UIButton", "currentTitle", "v@:", asImp(raise<id>), "action UIButton tap "},
    {"TitleIsACString", "UIButton", "currentTitle", "r*@:", asImp(raise<id>), "action UIButton tap "},
    {"TitleWithQualifiers", "UIButton", "currentTitle", "O@16@0:8", asImp(mutableTitle), "action UIButton tap Buy"},
    {"RaisingName", "UIButton", "customName", "@@:", asImp(raise<id>), "action UIButton tap "},
    {"NumberAsName", "UIButton", "customName", "@@:", asImp(number), "action UIButton tap "},
    {"RaisingClass", "UIButton", "class", "#@:", asImp(raise<id>), "action UIButton tap "},
    {"NoClass", "UIButton", "class", "#@:", asImp(none), "action UIButton tap "},
    {"RaisingLogEnabled", "UIButton", "logEnabled", truthType, imp(raise<BOOL>), "action UIButton tap "},
    {"RaisingDescription", "UIBarButtonItem", "description", "@@:", asImp(raise<id>), "action UIBarButtonItem tap "},
    {"NilDescription", "UIBarButtonItem", "description", "@@:", asImp(none), "action UIBarButtonItem tap "},
    {"SegmentTitleWithoutIndex", "UISegmentedControl", "titleForSegmentAtIndex:", "@@:Q", asImp(none),
     "action UISegmentedControl tap "},
    {"RaisingSegment", "UISegmentedControl", "selectedSegmentIndex", "q@:", imp(raise<NSInteger>),
     "action UISegmentedControl tap "},
    {"NilDate", "UIDatePicker", "date", "@@:", asImp(none), "action UIDatePicker "},
    {"NumberAsDate", "UIDatePicker", "date", "@@:", asImp(number), "action UIDatePicker "},
    {"RaisingDate", "UIDatePicker", "date", "@@:", asImp(raise<id>), "action UIDatePicker "},
    {"RaisingSliderValue", "UISlider", "value", "f@:", imp(raise<float>), "action UISlider Slide 0.0"},
    {"ObjectAsSliderValue", "UISlider", "value", "@@:", asImp(number), "action UISlider Slide 0.0"},
    {"RaisingContinuous", "UISlider", "isContinuous", truthType, imp(raise<BOOL>), "action UISlider Slide 0.0"},
    {"RaisingPage", "UIPageControl", "currentPage", "q@:", imp(raise<NSInteger>), "action UIPageControl 0"},
    {"RaisingSwitch", "UISwitch", "isOn", truthType, imp(raise<BOOL>), "action UISwitch tap false"},
};

const OddAnswer numbers[]{
    {"SliderAsFloat", "UISlider", "value", "f@:", imp([](id, SEL) { return 0.1F; }), "action UISlider Slide 0.1"},
    {"SliderAsDouble", "UISlider", "value", "d@:", imp([](id, SEL) { return 0.1; }), "action UISlider Slide 0.1"},
    {"SliderAsInt", "UISlider", "value", "i@:", imp([](id, SEL) { return 3; }), "action UISlider Slide 3.0"},
    {"SliderNaN", "UISlider", "value", "f@:", imp([](id, SEL) { return std::nanf(""); }), "action UISlider Slide nan"},
    {"SliderInfinite", "UISlider", "value", "f@:", imp([](id, SEL) { return -std::numeric_limits<float>::infinity(); }),
     "action UISlider Slide -inf"},
    {"StepperAsDouble", "UIStepper", "value", "d@:", imp([](id, SEL) { return 3.0; }), "action UIStepper tap 3.0"},
    {"StepperAsFloat", "UIStepper", "value", "f@:", imp([](id, SEL) { return 2.5F; }), "action UIStepper tap 2.5"},
    {"StepperAsInteger", "UIStepper", "value", "q@:", imp([](id, SEL) -> NSInteger { return -4; }),
     "action UIStepper tap -4.0"},
    {"PageAsInt", "UIPageControl", "currentPage", "i@:", imp([](id, SEL) { return 2; }), "action UIPageControl 2"},
    {"PageAsUnsigned", "UIPageControl", "currentPage", "Q@:", imp([](id, SEL) -> NSUInteger { return 2; }),
     "action UIPageControl 2"},
    {"PageAsShort", "UIPageControl", "currentPage", "s@:", imp([](id, SEL) -> short { return -2; }),
     "action UIPageControl -2"},
    {"SwitchAsBOOL", "UISwitch", "isOn", truthType, imp([](id, SEL) -> BOOL { return YES; }),
     "action UISwitch tap true"},
    {"SwitchAsBool", "UISwitch", "isOn", "B@:", imp([](id, SEL) { return true; }), "action UISwitch tap true"},
    {"SwitchAsInt", "UISwitch", "isOn", "i@:", imp([](id, SEL) { return 256; }), "action UISwitch tap true"},
    {"SwitchAsInteger", "UISwitch", "isOn", "q@:", imp([](id, SEL) -> NSInteger { return NSInteger{1} << 40; }),
     "action UISwitch tap true"},
    {"SwitchOffAsInt", "UISwitch", "isOn", "i@:", imp([](id, SEL) { return 0; }), "action UISwitch tap false"},
    {"OptedOutAsInt", "UISwitch", "logEnabled", "i@:", imp([](id, SEL) { return 0; }), ""},
    {"DateBeforeAllYears", "UIDatePicker", "date",
     "@@:", imp([](id, SEL) -> id { return [NSDate dateWithTimeIntervalSince1970:-1e300]; }), "action UIDatePicker "},
    {"DateBeyondAllYears", "UIDatePicker", "date", "@@:",
     imp([](id, SEL) -> id { return [NSDate dateWithTimeIntervalSince1970:std::numeric_limits<double>::infinity()]; }),
     "action UIDatePicker "},
};

constexpr auto nameOfRow = [](const auto& test) { return std::string(test.param.name); };

INSTANTIATE_TEST_SUITE_P(Texts, ObjCOddAnswers, ::testing::ValuesIn(texts), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Numbers, ObjCOddAnswers, ::testing::ValuesIn(numbers), nameOfRow);

// --- Classes that answer nothing at all

struct BareClass {
    const char* className;
    const char* event;
};

void PrintTo(const BareClass& row, std::ostream* stream) { *stream << row.className; }

class ObjCBareClasses : public ObjCOtherUIKit, public ::testing::WithParamInterface<BareClass> {};

TEST_P(ObjCBareClasses, AreRecordedWithWhatTheyHave) {
    makeApplication();
    start();
    make(GetParam().className); // later than everything else
    EXPECT_TRUE(act(object(GetParam().className)));
    EXPECT_EQ(recorded(), GetParam().event);
}

const BareClass bareClasses[]{{"UIButton", "action UIButton tap "},
                              {"UISegmentedControl", "action UISegmentedControl tap "},
                              {"UIBarButtonItem", "action UIBarButtonItem tap "},
                              {"UIStepper", "action UIStepper tap 0.0"},
                              {"UISwitch", "action UISwitch tap false"},
                              {"UIPageControl", "action UIPageControl 0"},
                              {"UIDatePicker", "action UIDatePicker "},
                              {"UISlider", "action UISlider Slide 0.0"},
                              {"UIRefreshControl", "action UIRefreshControl Refreshed "},
                              {"UITapGestureRecognizer", "action UITapGestureRecognizer Tap Gesture "},
                              {"UISwipeGestureRecognizer", "action UISwipeGestureRecognizer Swipe Gesture Unknown 0 "},
                              {"UIPinchGestureRecognizer", "action UIPinchGestureRecognizer Pinch Gesture "},
                              {"UILongPressGestureRecognizer", ""},
                              {"UIPanGestureRecognizer", ""},
                              {"UISwipeActionStandardButton", ""},
                              {"UIAlertController", ""},
                              {"UITableView", ""},
                              {"UIScrollView", ""},
                              {"UICollectionView", ""},
                              {"UITabBar", ""},
                              {"UISearchBar", ""},
                              {"UIViewController", ""}};

INSTANTIATE_TEST_SUITE_P(All, ObjCBareClasses, ::testing::ValuesIn(bareClasses),
                         [](const auto& test) { return std::string(test.param.className); });

// --- Whole platforms

TEST_F(ObjCOtherUIKit, MayBeMissing) {
    start();
    EXPECT_TRUE(Tallyfoot.isSwizzled);
    EXPECT_EQ(recorded(), "");
}

TEST_F(ObjCOtherUIKit, MayHaveItsOwnOptions) {
    makeApplication();
    makeButton([](id, SEL) -> id { return @"Buy"; });
    add("UIButton", "customName", "@@:", [](id, SEL) -> id { return @"Its own"; });
    start();
    act(object("UIButton"));
    EXPECT_EQ(recorded(), "action UIButton tap Its own");
}

TEST_F(ObjCOtherUIKit, MaySendFromWhatIsNoControl) {
    makeApplication();
    start();
    EXPECT_TRUE(act(@"text"));
    EXPECT_TRUE(act((id)[NSString class]));
    EXPECT_TRUE(act([[[NSObject alloc] init] autorelease]));
    EXPECT_TRUE(act(nil));
    EXPECT_EQ(delivered, 4);
    EXPECT_EQ(recorded(), "");
}

TEST_F(ObjCOtherUIKit, MayWorkOnAnotherThreadThanTheFirst) {
    makeApplication();
    makeButton([](id, SEL) -> id { return @"Buy"; });
    start();
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([] {
            NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
            for (int tap = 0; tap < 100; ++tap) act(object("UIButton"));
            [pool drain];
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(records().size(), 400U);
}

TEST_F(ObjCOtherUIKit, MaySetOptionsAndDelegatesOnManyThreads) {
    make("UIView");
    make("UIScrollView", "UIView");
    add("UIScrollView", "setDelegate:", "v@:@", [](id, SEL, id) {});
    start();
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([] {
            for (int round = 0; round < 100; ++round) {
                NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
                id view = object("UIScrollView");
                id delegate = [[[NSObject alloc] init] autorelease];
                [view performSelector:sel_registerName("setCustomName:") withObject:@"Named"];
                [view performSelector:sel_registerName("setDelegate:") withObject:delegate];
                [delegate performSelector:sel_registerName("scrollViewDidEndDecelerating:") withObject:view];
                [pool drain];
            }
        });
    for (auto& thread : threads) thread.join();
    const auto all = records();
    EXPECT_EQ(all.size(), 400U);
    for (const auto& record : all) EXPECT_EQ(record["evtLabel"], "Named");
}

TEST_F(ObjCOtherUIKit, MayHaveTextsWithNULs) {
    makeApplication();
    makeButton([](id self, SEL selector) -> id { return withNUL(self, selector); });
    start();
    act(object("UIButton"));
    EXPECT_EQ(records().back()["evtLabel"].get<std::string>(), std::string("a\0b", 3));
}

TEST_F(ObjCOtherUIKit, MayChangeANameAfterItWasGiven) {
    make("UIView");
    start();
    id view = object("UIView");
    NSMutableString* name = [NSMutableString stringWithString:@"Buy"];
    [view performSelector:sel_registerName("setCustomName:") withObject:name];
    [name appendString:@" now"];
    EXPECT_TRUE([[view performSelector:sel_registerName("customName")] isEqual:@"Buy"]);
}

// --- Call stacks

TEST_F(ObjCOtherUIKit, MayTrackASliderInAFunctionThatBearsTheMethodsName) {
    makeApplication();
    make("UISlider");
    add("UISlider", "isContinuous", truthType.c_str(), [](id, SEL) -> BOOL { return YES; });
    add("UISlider", "send", "v@:", [](id self, SEL) { act(self); });
    start();
    standInTracking(object("UISlider"));
    EXPECT_EQ(delivered, 1);
    EXPECT_EQ(recorded(), "");
    act(object("UISlider"));
    EXPECT_EQ(recorded(), "action UISlider Slide 0.0");
}

// --- Views in views

int asked = 0;

TEST_F(ObjCOtherUIKit, MayHaveAViewThatContainsItself) {
    make("UIView");
    add("UIView", "subviews", "@@:", [](id self, SEL) -> id {
        ++asked;
        return @[ self, self, self ];
    });
    add("UIView", "superview", "@@:", [](id self, SEL) -> id { return self; });
    make("UIGestureRecognizer");
    make("UITapGestureRecognizer", "UIGestureRecognizer");
    add("UITapGestureRecognizer", "view", "@@:", [](id, SEL) -> id {
        static id view = [[objc_lookUpClass("UIView") alloc] init];
        return view;
    });
    start();
    [object("UITapGestureRecognizer") performSelector:sel_registerName("swizzleGestureAction:") withObject:nil];
    EXPECT_EQ(recorded(), "gesture UITapGestureRecognizer Tap Gesture ");
    EXPECT_LE(asked, 130);
}

} // namespace

// A million subviews, which would take minutes to look at.
@interface Million : NSArray
@end

@implementation Million

- (NSUInteger)count {
    return 1000000;
}

- (id)objectAtIndex:(NSUInteger)index {
    (void)index;
    ++asked;
    return [[[objc_lookUpClass("UIView") alloc] init] autorelease];
}

@end

namespace {

TEST_F(ObjCOtherUIKit, MayHaveAViewWithAMillionSubviews) {
    make("UIView");
    make("UITableViewCell", "UIView");
    add("UITableViewCell", "subviews", "@@:", [](id, SEL) -> id { return [[[Million alloc] init] autorelease]; });
    make("UIScrollView", "UIView");
    add("UIScrollView", "setDelegate:", "v@:@", [](id, SEL, id) {});
    make("UITableView", "UIScrollView");
    add("UITableView", "cellForRowAtIndexPath:", "@@:@", [](id, SEL, id) -> id { return object("UITableViewCell"); });
    start();
    id delegate = [[[NSObject alloc] init] autorelease];
    id table = object("UITableView");
    [table performSelector:sel_registerName("setDelegate:") withObject:delegate];
    [delegate performSelector:sel_registerName("tableView:didSelectRowAtIndexPath:") withObject:table withObject:nil];
    EXPECT_EQ(recorded(), "selection UITableView Cell Selected ");
    EXPECT_LE(asked, 130);
}

} // namespace
