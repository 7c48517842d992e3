// Every kind of gesture, in every state and on every kind of view that matters, one test each. The
// recognizers are made to fire as UIKit does it: by telling their targets.
#include "ObjC/CaptureFixture.h"

#include <objc/runtime.h>

#include <ostream>

namespace {

using namespace tallyfoot::testing;

constexpr auto nameOfRow = [](const auto& test) { return std::string(test.param.name); };

// What the recognizer's own target, which the library added, is sent.
void fire(UIGestureRecognizer* recognizer) {
    [recognizer performSelector:sel_registerName("swizzleGestureAction:") withObject:recognizer];
}

template <class Recognizer>
Recognizer* on(UIView* view, UIGestureRecognizerState state = UIGestureRecognizerStateEnded) {
    Recognizer* recognizer = [[[Recognizer alloc] initWithTarget:nil action:NULL] autorelease];
    [view addGestureRecognizer:recognizer];
    recognizer.state = state;
    return recognizer;
}

id ofClass(const char* name) { return [[[objc_lookUpClass(name) alloc] init] autorelease]; }

UIView* plain() { return [[[UIView alloc] initWithFrame:CGRectMake(0, 0, 100, 100)] autorelease]; }

UILabel* label(NSString* text) {
    UILabel* made = [[[UILabel alloc] initWithFrame:CGRectMake(0, 0, 100, 20)] autorelease];
    made.text = text;
    return made;
}

UIView* around(UIView* inner) {
    UIView* outer = plain();
    [outer addSubview:inner];
    return outer;
}

UITableViewCell* cell(NSString* text) {
    UITableViewCell* made = [[[UITableViewCell alloc] initWithStyle:UITableViewCellStyleDefault
                                                    reuseIdentifier:nil] autorelease];
    made.textLabel.text = text;
    return made;
}

UITextField* field(NSString* text) {
    UITextField* made = [[[UITextField alloc] initWithFrame:CGRectMake(0, 0, 100, 30)] autorelease];
    made.text = text;
    return made;
}

UIView* named(const char* className, NSString* text) {
    UIView* made = ofClass(className);
    [made addSubview:label(text)];
    return made;
}

template <class Recognizer>
Recognizer* called(Recognizer* recognizer, NSString* name) {
    recognizer.customName = name;
    return recognizer;
}

UISwipeGestureRecognizer* swipe(NSUInteger direction) {
    UISwipeGestureRecognizer* made = on<UISwipeGestureRecognizer>(plain());
    made.direction = (UISwipeGestureRecognizerDirection)direction;
    return made;
}

struct GestureRow {
    const char* name;
    UIGestureRecognizer* (*make)();
    const char* event;
};

void PrintTo(const GestureRow& row, std::ostream* stream) { *stream << row.name; }

class ObjCGestures : public ObjCCapture, public ::testing::WithParamInterface<GestureRow> {};

TEST_P(ObjCGestures, GiveTheirAccount) {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    fire(GetParam().make());
    [pool drain];
    EXPECT_EQ(recorded(), GetParam().event);
}

using Tap = UITapGestureRecognizer;
using Pan = UIPanGestureRecognizer;
using Press = UILongPressGestureRecognizer;
using Pinch = UIPinchGestureRecognizer;
using Any = UIGestureRecognizer*;

#define TAPPED "gesture UITapGestureRecognizer Tap Gesture "
#define SWIPED "gesture UISwipeGestureRecognizer Swipe Gesture "
#define PINCHED "gesture UIPinchGestureRecognizer Pinch Gesture "
#define PRESSED "gesture UILongPressGestureRecognizer Long Press Gesture "
#define PANNED "gesture UIPanGestureRecognizer Pan Gesture "

const GestureRow accounts[]{
    {"TapByItsName", []() -> Any { return called(on<Tap>(label(@"Offer")), @"Buy"); }, TAPPED "Buy"},
    {"TapOnALabel", []() -> Any { return on<Tap>(label(@"Offer")); }, TAPPED "Offer"},
    {"TapOnATextField", []() -> Any { return on<Tap>(field(@"tea")); }, TAPPED "tea"},
    {"TapAroundALabel", []() -> Any { return on<Tap>(around(around(label(@"Deep")))); }, TAPPED "Deep"},
    {"TapOnACell", []() -> Any { return on<Tap>(cell(@"Row")); }, TAPPED "Row"},
    {"TapOnNothingWithAText", []() -> Any { return on<Tap>(plain()); }, TAPPED},
    {"TapWithoutAView", []() -> Any { return [[[Tap alloc] initWithTarget:nil action:NULL] autorelease]; }, TAPPED},
    {"SwipeRight", []() -> Any { return swipe(1); }, SWIPED "Right "},
    {"SwipeLeft", []() -> Any { return swipe(2); }, SWIPED "Left "},
    {"SwipeUp", []() -> Any { return swipe(4); }, SWIPED "Up "},
    {"SwipeDown", []() -> Any { return swipe(8); }, SWIPED "Down "},
    {"SwipeBothWays", []() -> Any { return swipe(3); }, SWIPED "Unknown 3 "},
    {"SwipeNowhere", []() -> Any { return swipe(0); }, SWIPED "Unknown 0 "},
    {"SwipeByItsName", []() -> Any { return called(swipe(8), @"Next"); }, SWIPED "Down Next"},
    {"Pinch", []() -> Any { return on<Pinch>(label(@"Map")); }, PINCHED},
    {"PinchByItsName", []() -> Any { return called(on<Pinch>(plain()), @"Zoom"); }, PINCHED "Zoom"},
    {"PinchThatBegins", []() -> Any { return on<Pinch>(plain(), UIGestureRecognizerStateBegan); }, PINCHED},
    {"PressOutsideOfTables", []() -> Any { return on<Press>(label(@"Offer")); }, PRESSED},
    {"PressByItsName", []() -> Any { return called(on<Press>(plain()), @"More"); }, PRESSED "More"},
    {"PressOnASheetsAction", []() -> Any { return on<Press>(named("UIActionSheetiOSDismissActionView", @"Cancel")); },
     "alert UILongPressGestureRecognizer Long Press Gesture Cancel"},
    {"PressOnAnAlertsActions",
     []() -> Any { return on<Press>(named("_UIAlertControllerInterfaceActionGroupView", @"OK")); },
     "alert UILongPressGestureRecognizer Long Press Gesture OK"},
    {"PanByItsName", []() -> Any { return called(on<Pan>(label(@"Card")), @"Moved"); }, PANNED "Moved"},
    {"PanOnALabel", []() -> Any { return on<Pan>(label(@"Card")); }, PANNED "Card"},
    {"PanOnACell", []() -> Any { return on<Pan>(cell(@"Row")); }, "gesture UIPanGestureRecognizer Cell Swipe Row"},
    {"PanOnNothingWithAText", []() -> Any { return on<Pan>(plain()); }, PANNED},
};

INSTANTIATE_TEST_SUITE_P(Accounts, ObjCGestures, ::testing::ValuesIn(accounts), nameOfRow);

template <class Recognizer, UIGestureRecognizerState state>
Any in() {
    return on<Recognizer>(plain(), state);
}

const GestureRow states[]{
    {"PressPossible", in<Press, UIGestureRecognizerStatePossible>, ""},
    {"PressBegan", in<Press, UIGestureRecognizerStateBegan>, PRESSED},
    {"PressChanged", in<Press, UIGestureRecognizerStateChanged>, ""},
    {"PressEnded", in<Press, UIGestureRecognizerStateEnded>, PRESSED},
    {"PressCancelled", in<Press, UIGestureRecognizerStateCancelled>, PRESSED},
    {"PressFailed", in<Press, UIGestureRecognizerStateFailed>, PRESSED},
    {"PanPossible", in<Pan, UIGestureRecognizerStatePossible>, ""},
    {"PanBegan", in<Pan, UIGestureRecognizerStateBegan>, ""},
    {"PanChanged", in<Pan, UIGestureRecognizerStateChanged>, ""},
    {"PanEnded", in<Pan, UIGestureRecognizerStateEnded>, PANNED},
    {"PanCancelled", in<Pan, UIGestureRecognizerStateCancelled>, ""},
    {"PanFailed", in<Pan, UIGestureRecognizerStateFailed>, ""},
};

INSTANTIATE_TEST_SUITE_P(States, ObjCGestures, ::testing::ValuesIn(states), nameOfRow);

template <class Recognizer>
Any onWeb() {
    return on<Recognizer>(named("UIWebBrowserView", @"Page"));
}

Any onAWebViewOfTheHosts() {
    Class own = objc_allocateClassPair(objc_lookUpClass("UIWebBrowserView"), "OwnWebView", 0);
    objc_registerClassPair(own);
    return on<Tap>(ofClass("OwnWebView"));
}

Any onASwitchOfTheHosts() {
    Class own = objc_allocateClassPair([UISwitch class], "UISwitchOfMine", 0);
    objc_registerClassPair(own);
    return on<Tap>(ofClass("UISwitchOfMine"));
}

const GestureRow onSpecialViews[]{
    {"TapOnAWebView", onWeb<Tap>, ""},
    {"PressOnAWebView", onWeb<Press>, ""},
    {"PanOnAWebView", onWeb<Pan>, PANNED "Page"},
    {"TapOnASubclassOfAWebView", onAWebViewOfTheHosts, ""},
    {"TapOnASwitchWithALongerName", onASwitchOfTheHosts, TAPPED},
};

INSTANTIATE_TEST_SUITE_P(SpecialViews, ObjCGestures, ::testing::ValuesIn(onSpecialViews), nameOfRow);

// --- What is never a gesture of the user's

struct SystemsOwn {
    const char* className;
};

void PrintTo(const SystemsOwn& row, std::ostream* stream) { *stream << row.className; }

class ObjCSystemsOwnViews : public ObjCCapture, public ::testing::WithParamInterface<SystemsOwn> {};

TEST_P(ObjCSystemsOwnViews, HaveNoGestures) {
    fire(on<Tap>(ofClass(GetParam().className)));
    fire(on<Pan>(ofClass(GetParam().className)));
    EXPECT_EQ(recorded(), "");
    fire(on<Tap>(plain()));
    EXPECT_EQ(recorded(), TAPPED);
}

INSTANTIATE_TEST_SUITE_P(All, ObjCSystemsOwnViews,
                         ::testing::Values(SystemsOwn{"_UISwitchInternalView"}, SystemsOwn{"UISearchBarTextField"},
                                           SystemsOwn{"UISearchBar"}, SystemsOwn{"UISwitchModernVisualElement"},
                                           SystemsOwn{"UIPickerTableViewWrapperCell"}, SystemsOwn{"UISwitch"},
                                           SystemsOwn{"_UISwitchInternalViewNeueStyle1"}),
                         [](const auto& test) { return std::string(test.param.className); });

class ObjCSystemsOwnRecognizers : public ObjCCapture, public ::testing::WithParamInterface<SystemsOwn> {};

TEST_P(ObjCSystemsOwnRecognizers, AreNotRecorded) {
    Class listed = objc_lookUpClass(GetParam().className);
    UIGestureRecognizer* recognizer = [[[Tap alloc] initWithTarget:nil action:NULL] autorelease];
    if (![listed isSubclassOfClass:[Pan class]] && ![listed isSubclassOfClass:[Tap class]]) {
        fire([[[listed alloc] initWithTarget:nil action:NULL] autorelease]); // of none of the five kinds
    } else {
        recognizer = [[[listed alloc] initWithTarget:nil action:NULL] autorelease];
        [label(@"Offer") addGestureRecognizer:recognizer];
        recognizer.state = UIGestureRecognizerStateEnded;
        fire(recognizer);
    }
    EXPECT_EQ(recorded(), "");
}

INSTANTIATE_TEST_SUITE_P(All, ObjCSystemsOwnRecognizers,
                         ::testing::Values(SystemsOwn{"UIScrollViewPanGestureRecognizer"},
                                           SystemsOwn{"UITextTapRecognizer"},
                                           SystemsOwn{"UIWebTouchEventsGestureRecognizer"}),
                         [](const auto& test) { return std::string(test.param.className); });

// --- In tables

TEST_F(ObjCCapture, RecordsALongPressInATableByTheRowUnderIt) {
    UITableView* table = [[[UITableView alloc] initWithFrame:CGRectMake(0, 0, 320, 440)] autorelease];
    table.dataSource = probe_;
    on<Press>(table, UIGestureRecognizerStatePossible);
    [Finger press:table at:CGPointMake(10, 50) for:0.6];
    EXPECT_EQ(recorded(), PRESSED "Row 1; " PRESSED "Row 1");
    [Finger press:table at:CGPointMake(10, 400) for:0.6]; // below the last one
    EXPECT_EQ(recorded(), PRESSED "; " PRESSED);
}

TEST_F(ObjCCapture, RecordsALongPressOnACellByItsText) {
    UITableView* table = [[[UITableView alloc] initWithFrame:CGRectMake(0, 0, 320, 440)] autorelease];
    table.dataSource = probe_;
    UITableViewCell* second = [table cellForRowAtIndexPath:[NSIndexPath indexPathForRow:1 inSection:0]];
    on<Press>(second, UIGestureRecognizerStatePossible);
    [Finger press:second for:0.6];
    EXPECT_EQ(recorded(), PRESSED "Row 1; " PRESSED "Row 1");
}

TEST_F(ObjCCapture, HearsOfThousandsOfRecognizersOfOneView) {
    for (int number = 0; number < 2000; ++number) on<Tap>(view_, UIGestureRecognizerStatePossible);
    for (UIGestureRecognizer* recognizer in view_.gestureRecognizers) fire(recognizer);
    EXPECT_EQ(records().size(), 2000U);
}

} // namespace
