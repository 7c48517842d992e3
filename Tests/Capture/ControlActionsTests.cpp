#include "Capture/CaptureHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <cerrno>
#include <thread>

namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class ControlActionsTest : public ::testing::Test {
protected:
    ControlActionsTest() { host_.capture.configureSwizzle(); }

    ObjectRef make(const char* className, std::map<std::string, MemoryRuntime::Value> answers = {}) {
        return host_.make(className, std::move(answers));
    }
    ObjectRef button(const char* title) { return make("UIButton", {{"currentTitle", std::string(title)}}); }
    void send(ObjectRef sender, const char* action = "buy:") { host_.sendAction(action, sender); }

    RecordedEvent only(ObjectRef sender, const char* action = "buy:") {
        host_.events.clear();
        send(sender, action);
        EXPECT_THAT(host_.events, SizeIs(1));
        return host_.events.empty() ? RecordedEvent{} : host_.events[0];
    }
    std::string label(ObjectRef sender) { return only(sender).label(); }
    std::string labelAs(const char* customName, ObjectRef sender) {
        host_.name(sender, customName);
        return label(sender);
    }
    bool isRecorded(ObjectRef sender, const char* action = "buy:") {
        host_.events.clear();
        send(sender, action);
        return !host_.events.empty();
    }

    CaptureHost host_;
};

TEST_F(ControlActionsTest, AButtonGivesItsWholeRecord) {
    const auto event = only(button("Add"));
    EXPECT_EQ(event.type, EventType::action);
    EXPECT_EQ(event.attributes, (Attributes{{LogAttribute::evtAction, "tap"},
                                            {LogAttribute::evtCategory, "UIButton"},
                                            {LogAttribute::evtLabel, "Add"}}));
}

TEST_F(ControlActionsTest, TheActionIsDeliveredOnce) {
    const auto result = host_.send(host_.application, "sendAction:to:from:forEvent:",
                                   {host_.runtime.sel_registerName("buy:"), ObjectRef{}, button("Add"), ObjectRef{}});
    EXPECT_TRUE(std::get<bool>(result));
    EXPECT_THAT(host_.journal, ElementsAre("sendAction"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(ControlActionsTest, TheActionIsDeliveredAfterItIsRecorded) {
    std::size_t recordedBefore = 0;
    host_.capture.swizzledSendAction(host_.runtime.sel_registerName("buy:"), button("Add"), [&] {
        recordedBefore = host_.events.size();
        return true;
    });
    EXPECT_EQ(recordedBefore, 1U);
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(ControlActionsTest, WithoutASenderItIsOnlyDelivered) {
    send({});
    EXPECT_THAT(host_.journal, ElementsAre("sendAction"));
    EXPECT_THAT(host_.events, IsEmpty());
}

TEST_F(ControlActionsTest, AnActionWithoutANameIsOnlyDelivered) {
    EXPECT_FALSE(isRecorded(button("Add"), ""));
    EXPECT_THAT(host_.journal, ElementsAre("sendAction"));
}

TEST_F(ControlActionsTest, WhatThePlatformAnswersComesBackAndWhatItThrowsPasses) {
    EXPECT_FALSE(
        host_.capture.swizzledSendAction(host_.runtime.sel_registerName("buy:"), button("Add"), [] { return false; }));
    EXPECT_THROW(host_.capture.swizzledSendAction(host_.runtime.sel_registerName("buy:"), button("Add"),
                                                  []() -> bool { throw std::range_error("host"); }),
                 std::range_error);
    EXPECT_THAT(host_.events, SizeIs(2));
}

TEST_F(ControlActionsTest, AFailureWhileRecordingCostsTheEventOnly) {
    const auto sender = button("Add");
    host_.runtime.answerWith(sender, "currentTitle",
                             [](const auto&) -> MemoryRuntime::Value { throw std::logic_error("getter"); });
    EXPECT_FALSE(isRecorded(sender));
    EXPECT_THAT(host_.journal, ElementsAre("sendAction"));
}

TEST_F(ControlActionsTest, RecordingLeavesErrnoAsItWas) {
    const auto sender = button("Buy");
    host_.runtime.answerWith(sender, "currentTitle", [](const auto&) {
        errno = ENOENT;
        return MemoryRuntime::Value(std::string("Buy"));
    });
    errno = EDOM;
    EXPECT_EQ(only(sender).label(), "Buy");
    EXPECT_EQ(errno, EDOM);
}

TEST_F(ControlActionsTest, AThreadThatIsCancelledEndsAfterTheActionIsRecordedAndDelivered) {
    const auto sender = button("Buy");
    host_.runtime.answerWith(sender, "currentTitle", [](const auto&) {
        ::pthread_testcancel();
        return MemoryRuntime::Value(std::string("Buy"));
    });
    int steps = 0;
    std::thread([&] {
        ::pthread_cancel(::pthread_self()); // heard where the thread may wait next
        send(sender);
        ++steps;
        ::pthread_testcancel();
        ++steps;
    }).join();
    EXPECT_EQ(steps, 1);
    EXPECT_THAT(host_.journal, ElementsAre("sendAction"));
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(ControlActionsTest, AButtonIsCalledByItsNameElseItsTitleElseNothing) {
    EXPECT_EQ(label(make("UIButton")), "");
    EXPECT_EQ(labelAs("Buy", button("Add")), "Buy");
    EXPECT_EQ(labelAs("", button("Add")), "Add");
    EXPECT_EQ(labelAs(" ", button("Add")), " ");
}

TEST_F(ControlActionsTest, ASegmentedControlIsCalledByItsSelectedSegment) {
    const auto control = make("UISegmentedControl", {{"selectedSegmentIndex", std::int64_t{1}}});
    host_.runtime.answerWith(control, "titleForSegmentAtIndex:", [](const auto& call) -> MemoryRuntime::Value {
        return "segment " + std::to_string(std::get<std::int64_t>(call.arguments[0]));
    });
    EXPECT_EQ(label(control), "segment 1");
    EXPECT_EQ(host_.events[0].action(), "tap");
    EXPECT_EQ(host_.events[0].category(), "UISegmentedControl");
    EXPECT_EQ(labelAs("Size", control), "Size");
}

TEST_F(ControlActionsTest, ASegmentedControlWithoutASelectionIsNotAskedForATitle) {
    const auto control = make("UISegmentedControl", {{"selectedSegmentIndex", std::int64_t{-1}}});
    host_.runtime.answerWith(control, "titleForSegmentAtIndex:", [](const auto&) -> MemoryRuntime::Value {
        ADD_FAILURE() << "asked beyond its segments";
        return {};
    });
    EXPECT_EQ(label(control), "");
    EXPECT_EQ(label(make("UISegmentedControl", {{"selectedSegmentIndex", std::int64_t{0}}})), "")
        << "a segment with an image has no title";
}

TEST_F(ControlActionsTest, ABarItemIsCalledByItsTitleElseBySystemItem) {
    const auto item = [&](const char* title, const char* description) {
        return make("UIBarButtonItem", {{"title", std::string(title)}, {"description", std::string(description)}});
    };
    EXPECT_EQ(label(item("Save", "<UIBarButtonItem: 0x1> title='Save'")), "Save");
    EXPECT_EQ(host_.events[0].action(), "tap");
    EXPECT_EQ(host_.events[0].category(), "UIBarButtonItem");
    EXPECT_EQ(label(item("", "<UIBarButtonItem: 0x1> systemItem=Done")), "Done");
    EXPECT_EQ(label(item("", "<UIBarButtonItem: 0x1> image=cart")), "");
    EXPECT_EQ(label(make("UIBarButtonItem", {{"description", std::string("x systemItem=Add")}})), "Add");
    EXPECT_EQ(label(make("UIBarButtonItem")), "");
    EXPECT_EQ(labelAs("Finish", item("Save", "")), "Finish");
}

TEST_F(ControlActionsTest, AStepperShowsItsValueBehindItsName) {
    EXPECT_EQ(label(make("UIStepper", {{"value", 3.0}})), "3.0");
    EXPECT_EQ(host_.events[0].action(), "tap");
    EXPECT_EQ(host_.events[0].category(), "UIStepper");
    EXPECT_EQ(labelAs("Qty", make("UIStepper", {{"value", 3.0}})), "Qty-3.0");
    EXPECT_EQ(labelAs(" Qty ", make("UIStepper", {{"value", -0.5}})), " Qty --0.5") << "the name is not trimmed";
    EXPECT_EQ(labelAs(" \n", make("UIStepper", {{"value", 2.0}})), "2.0") << "a blank name is none";
}

TEST_F(ControlActionsTest, ASwitchShowsWhetherItIsOn) {
    EXPECT_EQ(label(make("UISwitch", {{"isOn", true}})), "true");
    EXPECT_EQ(label(make("UISwitch", {{"isOn", false}})), "false");
    EXPECT_EQ(host_.events[0].action(), "tap");
    EXPECT_EQ(host_.events[0].category(), "UISwitch");
    EXPECT_EQ(labelAs(" ", make("UISwitch", {{"isOn", true}})), "true");
    EXPECT_EQ(labelAs("Push", make("UISwitch", {{"isOn", true}})), "Push-true");
}

TEST_F(ControlActionsTest, APageControlShowsItsPageAndNoAction) {
    const auto event = only(make("UIPageControl", {{"currentPage", std::int64_t{2}}}));
    EXPECT_EQ(event.attributes,
              (Attributes{{LogAttribute::evtCategory, "UIPageControl"}, {LogAttribute::evtLabel, "2"}}));
    EXPECT_EQ(labelAs("Tour", make("UIPageControl", {{"currentPage", std::int64_t{0}}})), "Tour-0");
}

TEST_F(ControlActionsTest, ADatePickerShowsItsDateInUTCAndNoAction) {
    const MemoryRuntime::DateValue date{1709820309.9};
    const auto event = only(make("UIDatePicker", {{"date", date}}));
    EXPECT_EQ(event.attributes, (Attributes{{LogAttribute::evtCategory, "UIDatePicker"},
                                            {LogAttribute::evtLabel, "2024-03-07 14:05:09 +0000"}}));
    EXPECT_EQ(labelAs("Due", make("UIDatePicker", {{"date", date}})), "Due-2024-03-07 14:05:09 +0000");
    EXPECT_EQ(label(make("UIDatePicker")), "");
}

TEST_F(ControlActionsTest, ASliderShowsItsValue) {
    const auto event = only(make("UISlider", {{"value", 0.5F}}));
    EXPECT_EQ(event.label(), "0.5");
    EXPECT_EQ(event.action(), "Slide");
    EXPECT_EQ(event.category(), "UISlider");
    EXPECT_EQ(label(make("UISlider", {{"value", 0.1F}})), "0.1") << "no digits of a double";
    EXPECT_EQ(labelAs("Volume", make("UISlider", {{"value", 1.0F}})), "Volume-1.0");
}

TEST_F(ControlActionsTest, AContinuousSliderIsNotRecordedWhileItIsDragged) {
    const auto slider = make("UISlider", {{"value", 0.5F}, {"isContinuous", true}});
    EXPECT_TRUE(isRecorded(slider));
    host_.runtime.callStackSymbols = {"0 Shop main",
                                      "5 UIKitCore -[UISlider continueTrackingWithTouch:withEvent:] + 9"};
    EXPECT_FALSE(isRecorded(slider));
    host_.runtime.callStackSymbols = {"5 UIKitCore -[UISlider endTrackingWithTouch:withEvent:] + 9"};
    EXPECT_TRUE(isRecorded(slider));
}

TEST_F(ControlActionsTest, ASliderThatIsNotContinuousIsRecordedWhateverTheCallStack) {
    host_.runtime.callStackSymbols = {"-[UISlider continueTrackingWithTouch:withEvent:]"};
    EXPECT_TRUE(isRecorded(make("UISlider", {{"value", 0.5F}, {"isContinuous", false}})));
    EXPECT_EQ(host_.runtime.callStackLooks, 0);
}

TEST_F(ControlActionsTest, ABlankNameStandsBeforeNoValue) {
    EXPECT_EQ(labelAs("\t", make("UIPageControl", {{"currentPage", std::int64_t{2}}})), "2");
    EXPECT_EQ(labelAs("\n ", make("UISlider", {{"value", 0.5F}})), "0.5");
    EXPECT_EQ(labelAs("\xC2\xA0", make("UIDatePicker", {{"date", MemoryRuntime::DateValue{0}}})),
              "1970-01-01 00:00:00 +0000");
}

TEST_F(ControlActionsTest, ARefreshControlShowsItsNameAsItIs) {
    const auto event = only(make("UIRefreshControl"));
    EXPECT_EQ(event.label(), "");
    EXPECT_EQ(event.action(), "Refreshed");
    EXPECT_EQ(event.category(), "UIRefreshControl");
    EXPECT_EQ(labelAs(" News ", make("UIRefreshControl")), " News ");
}

TEST_F(ControlActionsTest, SendersThatSayNothingAboutThemselvesAreNotRecorded) {
    for (const auto* className : {"UITextField", "UIControl", "NSObject", "UIAlertController", "UITableView",
                                  "UIScrollView", "UICollectionView", "UITabBar", "UISearchBar", "UIViewController"})
        EXPECT_FALSE(isRecorded(make(className))) << className;
    EXPECT_THAT(host_.journal, SizeIs(10));
}

TEST_F(ControlActionsTest, ADisabledSenderIsNotRecorded) {
    for (const auto* className : {"UIButton", "UISegmentedControl", "UIBarButtonItem", "UIStepper", "UISwitch",
                                  "UIPageControl", "UIDatePicker", "UISlider", "UIRefreshControl"}) {
        const auto sender = make(className);
        host_.disable(sender);
        EXPECT_FALSE(isRecorded(sender)) << className;
    }
}

TEST_F(ControlActionsTest, ACustomTitleIsTheCategoryAndMayBeIgnored) {
    host_.facade.titles[ITFClass::button] = "Btn";
    EXPECT_EQ(only(button("Add")).category(), "Btn");
    host_.facade.ignored = {"UIButton"};
    EXPECT_TRUE(isRecorded(button("Add")));
    host_.facade.ignored = {"Btn"};
    EXPECT_FALSE(isRecorded(button("Add")));
    EXPECT_FALSE(isRecorded(button("Add"), "_accessoryButtonAction:"));
    EXPECT_TRUE(isRecorded(make("UISwitch")));
}

TEST_F(ControlActionsTest, AnAccessoryButtonHasAnActionAndNoLabel) {
    const auto event = only(button("i"), "_accessoryButtonAction:");
    EXPECT_EQ(event.type, EventType::action);
    EXPECT_EQ(event.attributes,
              (Attributes{{LogAttribute::evtAction, "Accessory Button Tap"}, {LogAttribute::evtCategory, "UIButton"}}));
    EXPECT_EQ(only(make("UISwitch"), "_accessoryButtonAction:").action(), "tap") << "only for buttons";
    const auto disabled = button("i");
    host_.disable(disabled);
    EXPECT_FALSE(isRecorded(disabled, "_accessoryButtonAction:"));
}

TEST_F(ControlActionsTest, ASwipeActionsButtonIsRecordedWhenTouched) {
    const auto swipe = make("UISwipeActionStandardButton", {{"currentTitle", std::string("Delete")}});
    host_.runtime.callStackSymbols = {"3 UIKitCore -[UIControl touchesEnded:withEvent:] + 4"};
    const auto event = only(swipe);
    EXPECT_EQ(event.type, EventType::action);
    EXPECT_EQ(event.attributes, (Attributes{{LogAttribute::evtAction, "Cell Swipe Button Tap"},
                                            {LogAttribute::evtCategory, "UISwipeActionStandardButton"},
                                            {LogAttribute::evtLabel, "Delete"}}));
    host_.runtime.callStackSymbols.clear();
    EXPECT_FALSE(isRecorded(swipe)) << "from the host's code";
}

TEST_F(ControlActionsTest, ASwipeActionsButtonNeedsATitleAndToBeAButton) {
    host_.runtime.callStackSymbols = {"-[UIControl touchesEnded:withEvent:]"};
    EXPECT_FALSE(isRecorded(make("UISwipeActionStandardButton")));
    EXPECT_EQ(only(make("UISwipeActionStandardButton", {{"currentTitle", std::string()}})).label(), "");
    host_.addClass("Other.UISwipeActionStandardButton", "UIControl");
    EXPECT_FALSE(isRecorded(make("Other.UISwipeActionStandardButton", {{"currentTitle", std::string("x")}})));
}

TEST_F(ControlActionsTest, ASwipeActionsButtonMayBeDisabledOrIgnored) {
    host_.runtime.callStackSymbols = {"-[UIControl touchesEnded:withEvent:]"};
    const auto swipe = make("UISwipeActionStandardButton", {{"currentTitle", std::string("Delete")}});
    host_.facade.ignored = {"UISwipeActionStandardButton"};
    EXPECT_FALSE(isRecorded(swipe));
    host_.facade.ignored.clear();
    host_.disable(swipe);
    EXPECT_FALSE(isRecorded(swipe));
    EXPECT_EQ(host_.runtime.callStackLooks, 0) << "the dear question comes last";
}

TEST_F(ControlActionsTest, TheSearchBarsOwnButtonsAreLeftToItsDelegate) {
    for (const auto* action : {"_resultsListButtonPressed", "_clearButtonClicked:", "_cancelButtonPressed"})
        EXPECT_FALSE(isRecorded(button("x"), action)) << action;
    EXPECT_TRUE(isRecorded(button("x"), "_clearButtonClicked"));
    EXPECT_THAT(host_.journal, SizeIs(4));
}

TEST_F(ControlActionsTest, ALongPressSentAsAnActionIsOneInFourStates) {
    const auto press = make("UILongPressGestureRecognizer");
    for (const auto& [state, expected] :
         std::map<std::int64_t, bool>{{0, false}, {1, true}, {2, false}, {3, true}, {4, true}, {5, true}, {6, false}}) {
        host_.runtime.answer(press, "state", state);
        EXPECT_EQ(isRecorded(press), expected) << state;
    }
    host_.runtime.answer(press, "state", std::int64_t{3});
    const auto event = only(press, "_clearButtonClicked:");
    EXPECT_EQ(event.type, EventType::action);
    EXPECT_EQ(event.attributes, (Attributes{{LogAttribute::evtAction, "Long Press Gesture"},
                                            {LogAttribute::evtCategory, "UILongPressGestureRecognizer"},
                                            {LogAttribute::evtLabel, ""}}));
}

TEST_F(ControlActionsTest, ALongPressOnAnAlertSentAsAnActionIsOfTypeAlert) {
    host_.addClass("UIActionSheetiOSDismissActionView", "UIView");
    const auto alert = host_.makeView("UIActionSheetiOSDismissActionView", {host_.makeLabel("Cancel")});
    const auto press = make("UILongPressGestureRecognizer", {{"state", std::int64_t{1}}, {"view", alert}});
    EXPECT_EQ(only(press).type, EventType::alert);
    EXPECT_EQ(host_.events[0].label(), "Cancel");
    host_.facade.ignored = {"UILongPressGestureRecognizer"};
    EXPECT_FALSE(isRecorded(press));
    host_.facade.ignored.clear();
    host_.disable(press);
    EXPECT_FALSE(isRecorded(press));
}

TEST_F(ControlActionsTest, OtherRecognizersSentAsAnActionAreOfTypeAction) {
    EXPECT_EQ(only(make("UITapGestureRecognizer")).type, EventType::action);
}

TEST_F(ControlActionsTest, AnObservedButtonIsRecordedAsOne) {
    const auto sender = button("Add");
    host_.runtime.observe(sender);
    EXPECT_EQ(only(sender).category(), "UIButton");
}

} // namespace
} // namespace tallyfoot::testing
