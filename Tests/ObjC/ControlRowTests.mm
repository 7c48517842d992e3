// Every kind of sender and every account that it gives of itself, one test each.
#include "ObjC/CaptureFixture.h"

#include <objc/runtime.h>

#include <ostream>

namespace {

using namespace tallyfoot::testing;

// A sender as the host made it, and the event that its action must leave; none: "".
struct ControlRow {
    const char* name;
    id (*make)();
    const char* event;
    const char* action = "action:";
};

void PrintTo(const ControlRow& row, std::ostream* stream) { *stream << row.name; }

constexpr auto nameOfRow = [](const auto& test) { return std::string(test.param.name); };

template <class Object>
Object* a() {
    return [[[Object alloc] init] autorelease];
}

template <class Object>
Object* named(Object* object, NSString* name) {
    object.customName = name;
    return object;
}

class ObjCControls : public ObjCCapture, public ::testing::WithParamInterface<ControlRow> {
protected:
    // The target knows the action, whatever it is called.
    BOOL act(id sender) {
        const std::string action = GetParam().action;
        const SEL takes = action.ends_with(':') ? @selector(action:) : @selector(bareAction);
        class_addMethod([probe_ class], sel_registerName(action.c_str()), [probe_ methodForSelector:takes],
                        action.ends_with(':') ? "v@:@" : "v@:");
        return [[UIApplication sharedApplication] sendAction:sel_registerName(GetParam().action)
                                                          to:probe_
                                                        from:sender
                                                    forEvent:nil];
    }
};

TEST_P(ObjCControls, GiveTheirAccount) {
    EXPECT_TRUE(act(GetParam().make()));
    EXPECT_EQ([probe_->heard count], 1U);
    EXPECT_EQ(recorded(), GetParam().event);
}

UIButton* button(NSString* title) {
    UIButton* made = [UIButton buttonWithType:UIButtonTypeSystem];
    [made setTitle:title forState:UIControlStateNormal];
    return made;
}

UISegmentedControl* segments(NSInteger selected) {
    UISegmentedControl* made = [[[UISegmentedControl alloc] initWithItems:@[ @"Day", @"Night", @"" ]] autorelease];
    made.selectedSegmentIndex = selected;
    return made;
}

UIBarButtonItem* item(NSString* title) {
    return [[[UIBarButtonItem alloc] initWithTitle:title style:UIBarButtonItemStylePlain target:nil
                                            action:NULL] autorelease];
}

UIBarButtonItem* systemItem(UIBarButtonSystemItem kind) {
    return [[[UIBarButtonItem alloc] initWithBarButtonSystemItem:kind target:nil action:NULL] autorelease];
}

UIStepper* stepper(double value) {
    UIStepper* made = a<UIStepper>();
    made.maximumValue = 1e12;
    made.value = value;
    return made;
}

UISwitch* light(BOOL on) {
    UISwitch* made = a<UISwitch>();
    made.on = on;
    return made;
}

UIPageControl* pages(NSInteger current) {
    UIPageControl* made = a<UIPageControl>();
    made.numberOfPages = 5;
    made.currentPage = current;
    return made;
}

UIDatePicker* picker(NSTimeInterval seconds) {
    UIDatePicker* made = a<UIDatePicker>();
    made.date = [NSDate dateWithTimeIntervalSince1970:seconds];
    return made;
}

UISlider* slider(float value, BOOL isContinuous = YES) {
    UISlider* made = a<UISlider>();
    made.value = value;
    made.continuous = isContinuous;
    return made;
}

const ControlRow accounts[]{
    {"ButtonByItsName", []() -> id { return named(button(@"Add"), @"Buy"); }, "action UIButton tap Buy"},
    {"ButtonByItsTitle", []() -> id { return named(button(@"Add"), @""); }, "action UIButton tap Add"},
    {"ButtonByABlankName", []() -> id { return named(button(@"Add"), @" "); }, "action UIButton tap  "},
    {"ButtonWithoutTitle", []() -> id { return button(nil); }, "action UIButton tap "},
    {"SegmentByItsName", []() -> id { return named(segments(1), @"Time"); }, "action UISegmentedControl tap Time"},
    {"SegmentByItsTitle", []() -> id { return segments(0); }, "action UISegmentedControl tap Day"},
    {"SegmentWithoutTitle", []() -> id { return segments(2); }, "action UISegmentedControl tap "},
    {"NoSegment", []() -> id { return segments(UISegmentedControlNoSegment); }, "action UISegmentedControl tap "},
    {"BarItemByItsName", []() -> id { return named(item(@"Pay"), @"Buy"); }, "action UIBarButtonItem tap Buy"},
    {"BarItemByItsTitle", []() -> id { return item(@"Pay"); }, "action UIBarButtonItem tap Pay"},
    {"BarItemBySystemItem", []() -> id { return systemItem(UIBarButtonSystemItemTrash); },
     "action UIBarButtonItem tap Trash"},
    {"BarItemWithAnImage",
     []() -> id {
         return [[[UIBarButtonItem alloc] initWithImage:@"cart" style:UIBarButtonItemStylePlain target:nil
                                                 action:NULL] autorelease];
     },
     "action UIBarButtonItem tap "},
    {"Stepper", []() -> id { return stepper(3); }, "action UIStepper tap 3.0"},
    {"StepperOfTenths", []() -> id { return stepper(0.1); }, "action UIStepper tap 0.1"},
    {"StepperWithAName", []() -> id { return named(stepper(3), @"Qty"); }, "action UIStepper tap Qty-3.0"},
    {"StepperWithABlankName", []() -> id { return named(stepper(3), @" \n"); }, "action UIStepper tap 3.0"},
    {"StepperWithAnUntrimmedName", []() -> id { return named(stepper(3), @" Qty "); },
     "action UIStepper tap  Qty -3.0"},
    {"SwitchOn", []() -> id { return light(YES); }, "action UISwitch tap true"},
    {"SwitchOff", []() -> id { return light(NO); }, "action UISwitch tap false"},
    {"SwitchWithABlankName", []() -> id { return named(light(YES), @" "); }, "action UISwitch tap true"},
    {"SwitchWithAName", []() -> id { return named(light(YES), @"Push"); }, "action UISwitch tap Push-true"},
    {"PageControl", []() -> id { return pages(2); }, "action UIPageControl 2"},
    {"PageControlWithAName", []() -> id { return named(pages(2), @"Page"); }, "action UIPageControl Page-2"},
    {"DatePicker", []() -> id { return picker(86400); }, "action UIDatePicker 1970-01-02 00:00:00 +0000"},
    {"DatePickerWithAName", []() -> id { return named(picker(0), @"Day"); },
     "action UIDatePicker Day-1970-01-01 00:00:00 +0000"},
    {"Slider", []() -> id { return slider(0.5F); }, "action UISlider Slide 0.5"},
    {"SliderOfTenths", []() -> id { return slider(0.1F); }, "action UISlider Slide 0.1"},
    {"SliderThatIsNotContinuous", []() -> id { return slider(1, NO); }, "action UISlider Slide 1.0"},
    {"SliderWithAName", []() -> id { return named(slider(0.5F), @"Volume"); }, "action UISlider Slide Volume-0.5"},
    {"RefreshControl", []() -> id { return a<UIRefreshControl>(); }, "action UIRefreshControl Refreshed "},
    {"RefreshControlWithAName", []() -> id { return named(a<UIRefreshControl>(), @"Orders"); },
     "action UIRefreshControl Refreshed Orders"},
};

INSTANTIATE_TEST_SUITE_P(Accounts, ObjCControls, ::testing::ValuesIn(accounts), nameOfRow);

template <class Object>
id made() {
    return a<Object>();
}

id ofClass(const char* name) { return [[[objc_lookUpClass(name) alloc] init] autorelease]; }

const ControlRow specialCases[]{
    {"AccessoryButton", []() -> id { return button(@"More"); }, "action UIButton Accessory Button Tap",
     "_accessoryButtonAction:"},
    {"AccessoryOfASwitch", []() -> id { return light(YES); }, "action UISwitch tap true", "_accessoryButtonAction:"},
    {"SwipeActionInCode",
     []() -> id {
         UIButton* made = ofClass("UISwipeActionStandardButton");
         [made setTitle:@"Delete" forState:UIControlStateNormal];
         return made;
     },
     ""},
    {"SearchBarsClearButton", []() -> id { return button(@"Clear"); }, "", "_clearButtonClicked:"},
    {"SearchBarsCancelButton", []() -> id { return button(@"Cancel"); }, "", "_cancelButtonPressed"},
    {"SearchBarsResultsListButton", []() -> id { return button(@"List"); }, "", "_resultsListButtonPressed"},
    {"AnActionWithALongerName", []() -> id { return button(@"Clear"); }, "action UIButton tap Clear",
     "_cancelButtonPressed:"},
    // Kinds that have no account of themselves, or none as senders of actions.
    {"Alert", made<UIAlertController>, ""},
    {"Table", made<UITableView>, ""},
    {"ScrollView", made<UIScrollView>, ""},
    {"TabBar", made<UITabBar>, ""},
    {"SearchBar", made<UISearchBar>, ""},
    {"ViewController", made<UIViewController>, ""},
    {"TextField", made<UITextField>, ""},
    {"View", made<UIView>, ""},
    {"Object", made<NSObject>, ""},
};

INSTANTIATE_TEST_SUITE_P(SpecialCases, ObjCControls, ::testing::ValuesIn(specialCases), nameOfRow);

// --- What holds for every kind

struct Kind {
    const char* className;
    id (*make)();
};

void PrintTo(const Kind& kind, std::ostream* stream) { *stream << kind.className; }

class ObjCSenders : public ObjCCapture, public ::testing::WithParamInterface<Kind> {
protected:
    std::string category() {
        [[UIApplication sharedApplication] sendAction:@selector(action:) to:probe_ from:sender_ forEvent:nil];
        const auto all = records();
        return all.size() == seen_ ? "" : all[seen_++]["evtCategory"].get<std::string>();
    }

    static void ignore(NSString* category) {
        [Tallyfoot configure:nil ignoreClasses:@[ category ] authenticationClosure:nil];
    }

    NSString* className_ = [NSString stringWithUTF8String:GetParam().className];
    UIControl* sender_ = GetParam().make();

private:
    std::size_t seen_ = 0;
};

TEST_P(ObjCSenders, AreRecordedUnlessSwitchedOff) {
    EXPECT_EQ(category(), GetParam().className);
    sender_.logEnabled = NO;
    EXPECT_EQ(category(), "");
    sender_.logEnabled = YES;
    EXPECT_EQ(category(), GetParam().className);
}

TEST_P(ObjCSenders, AreNotRecordedWhereIgnored) {
    ignore(className_);
    EXPECT_EQ(category(), "");
}

TEST_P(ObjCSenders, BearTheirCustomTitleAndAreIgnoredWithIt) {
    [Tallyfoot categoryCustomTitles:@{className_ : @"Mine"}];
    EXPECT_EQ(category(), "Mine");
    ignore(className_);
    EXPECT_EQ(category(), "");
}

TEST_P(ObjCSenders, CountAsTheirKindWhenTheirClassIsMadeByTheHost) {
    Class own = objc_allocateClassPair([sender_ class], "Own", 0);
    objc_registerClassPair(own);
    object_setClass(sender_, own);
    EXPECT_EQ(category(), GetParam().className);
}

template <class Recognizer>
id ended() {
    Recognizer* recognizer = [[[Recognizer alloc] initWithTarget:nil action:NULL] autorelease];
    recognizer.state = UIGestureRecognizerStateEnded;
    return recognizer;
}

const Kind kinds[]{{"UIButton", []() -> id { return button(@"Buy"); }},
                   {"UISegmentedControl", []() -> id { return segments(0); }},
                   {"UIBarButtonItem", []() -> id { return item(@"Pay"); }},
                   {"UIStepper", made<UIStepper>},
                   {"UISwitch", made<UISwitch>},
                   {"UIPageControl", made<UIPageControl>},
                   {"UIDatePicker", made<UIDatePicker>},
                   {"UISlider", made<UISlider>},
                   {"UIRefreshControl", made<UIRefreshControl>},
                   {"UITapGestureRecognizer", ended<UITapGestureRecognizer>},
                   {"UISwipeGestureRecognizer", ended<UISwipeGestureRecognizer>},
                   {"UIPinchGestureRecognizer", ended<UIPinchGestureRecognizer>},
                   {"UILongPressGestureRecognizer", ended<UILongPressGestureRecognizer>},
                   {"UIPanGestureRecognizer", ended<UIPanGestureRecognizer>}};

INSTANTIATE_TEST_SUITE_P(All, ObjCSenders, ::testing::ValuesIn(kinds),
                         [](const auto& test) { return std::string(test.param.className); });

// --- A long press as the sender of an action

struct Reached {
    const char* name;
    UIGestureRecognizerState state;
    bool isRecorded;
};

void PrintTo(const Reached& row, std::ostream* stream) { *stream << row.name; }

class ObjCLongPressActions : public ObjCCapture, public ::testing::WithParamInterface<Reached> {};

TEST_P(ObjCLongPressActions, AreRecordedInSomeStates) {
    UILongPressGestureRecognizer* press = ended<UILongPressGestureRecognizer>();
    press.state = GetParam().state;
    [[UIApplication sharedApplication] sendAction:@selector(action:) to:probe_ from:press forEvent:nil];
    EXPECT_EQ(recorded(), GetParam().isRecorded ? "action UILongPressGestureRecognizer Long Press Gesture " : "");
}

INSTANTIATE_TEST_SUITE_P(States, ObjCLongPressActions,
                         ::testing::Values(Reached{"Possible", UIGestureRecognizerStatePossible, false},
                                           Reached{"Began", UIGestureRecognizerStateBegan, true},
                                           Reached{"Changed", UIGestureRecognizerStateChanged, false},
                                           Reached{"Ended", UIGestureRecognizerStateEnded, true},
                                           Reached{"Cancelled", UIGestureRecognizerStateCancelled, true},
                                           Reached{"Failed", UIGestureRecognizerStateFailed, true}),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
