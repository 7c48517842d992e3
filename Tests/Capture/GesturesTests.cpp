#include "Capture/CaptureHost.h"

#include "Tallyfoot/Capture/IgnoreLists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyfoot::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

class GesturesTest : public ::testing::Test {
protected:
    GesturesTest() { host_.capture.configureSwizzle(); }

    void setState(ObjectRef recognizer, std::int64_t state) { host_.runtime.answer(recognizer, "state", state); }
    RecordedEvent only(ObjectRef recognizer) {
        host_.events.clear();
        host_.fire(recognizer);
        EXPECT_THAT(host_.events, SizeIs(1));
        return host_.events.empty() ? RecordedEvent{} : host_.events[0];
    }
    bool isRecorded(ObjectRef recognizer) {
        host_.events.clear();
        host_.fire(recognizer);
        return !host_.events.empty();
    }
    ObjectRef tapOn(ObjectRef view) { return host_.makeRecognizer("UITapGestureRecognizer", view); }

    // A table with one cell at row 0, which lies at (10, 20).
    ObjectRef makeTable(ObjectRef cell) {
        const auto table = host_.make("UITableView");
        const auto indexPath = host_.make("NSObject");
        host_.runtime.answerWith(table, "indexPathForRowAtPoint:", [indexPath](const auto& call) {
            const bool isThere = std::get<Point>(call.arguments[0]) == Point{10, 20};
            return MemoryRuntime::Value(isThere ? indexPath : ObjectRef{});
        });
        host_.runtime.answerWith(table, "cellForRowAtIndexPath:", [cell, indexPath](const auto& call) {
            return MemoryRuntime::Value(call.object(0) == indexPath ? cell : ObjectRef{});
        });
        return table;
    }
    ObjectRef pressIn(ObjectRef view, ObjectRef table, Point point) {
        const auto press = host_.makeRecognizer("UILongPressGestureRecognizer", view);
        setState(press, 1);
        host_.runtime.answerWith(press, "locationInView:", [table, point](const auto& call) {
            return call.object(0) == table ? MemoryRuntime::Value(point) : MemoryRuntime::Value();
        });
        return press;
    }

    CaptureHost host_;
};

TEST_F(GesturesTest, EachStandardRecognizerGetsATargetWhenItIsMade) {
    for (const auto* className : {"UISwipeGestureRecognizer", "UIPinchGestureRecognizer",
                                  "UILongPressGestureRecognizer", "UITapGestureRecognizer", "UIPanGestureRecognizer"}) {
        host_.journal.clear();
        EXPECT_TRUE(host_.makeRecognizer(className));
        EXPECT_THAT(host_.journal, ElementsAre("initWithTarget:action:", "addTarget itself swizzleGestureAction:"))
            << className;
    }
}

TEST_F(GesturesTest, SoDoSubclassesButNoOtherRecognizer) {
    host_.addClass("HostTap", "UITapGestureRecognizer");
    host_.addClass("HostRecognizer", "UIGestureRecognizer");
    host_.makeRecognizer("HostTap");
    EXPECT_THAT(host_.journal, Contains("addTarget itself swizzleGestureAction:"));
    host_.journal.clear();
    host_.makeRecognizer("HostRecognizer");
    host_.makeRecognizer("UIRotationGestureRecognizer");
    EXPECT_THAT(host_.journal, ElementsAre("initWithTarget:action:", "initWithTarget:action:"));
}

TEST_F(GesturesTest, AnInitialiserThatGivesNothingGivesNothing) {
    EXPECT_FALSE(host_.capture.swizzle_initWithTarget([] { return ObjectRef{}; }));
    EXPECT_THAT(host_.journal, IsEmpty());
}

TEST_F(GesturesTest, TheInitialisersReplacementIsTheOneThatIsWatched) {
    const auto other = host_.make("UITapGestureRecognizer");
    EXPECT_EQ(host_.capture.swizzle_initWithTarget([&] { return other; }), other);
    EXPECT_THAT(host_.journal, ElementsAre("addTarget itself swizzleGestureAction:"));
}

TEST_F(GesturesTest, ATapGivesItsWholeRecord) {
    const auto event = only(tapOn(host_.makeLabel("Terms")));
    EXPECT_EQ(event.type, EventType::gesture);
    EXPECT_EQ(event.attributes, (Attributes{{LogAttribute::evtAction, "Tap Gesture"},
                                            {LogAttribute::evtCategory, "UITapGestureRecognizer"},
                                            {LogAttribute::evtLabel, "Terms"}}));
}

TEST_F(GesturesTest, ATapIsCalledByItsNameElseByTheTextInItsView) {
    EXPECT_EQ(only(tapOn(host_.makeView("UIView", {host_.makeLabel("inside")}))).label(), "inside");
    EXPECT_EQ(only(tapOn(host_.make("UIView"))).label(), "");
    EXPECT_EQ(only(tapOn({})).label(), "");
    const auto named = tapOn(host_.makeLabel("Terms"));
    host_.name(named, " ");
    EXPECT_EQ(only(named).label(), " ");
}

TEST_F(GesturesTest, ASwipeTellsItsDirection) {
    const auto swipe = host_.makeRecognizer("UISwipeGestureRecognizer", host_.makeLabel("unused"));
    for (const auto& [direction, text] : std::map<std::int64_t, std::string>{{1, "Right"},
                                                                             {2, "Left"},
                                                                             {4, "Up"},
                                                                             {8, "Down"},
                                                                             {3, "Unknown 3"},
                                                                             {0, "Unknown 0"},
                                                                             {-1, "Unknown 18446744073709551615"},
                                                                             {15, "Unknown 15"}}) {
        host_.runtime.answer(swipe, "direction", direction);
        EXPECT_EQ(only(swipe).action(), "Swipe Gesture " + text);
    }
    EXPECT_EQ(host_.events[0].label(), "");
    EXPECT_EQ(host_.events[0].category(), "UISwipeGestureRecognizer");
    host_.name(swipe, "Next");
    EXPECT_EQ(only(swipe).label(), "Next");
}

TEST_F(GesturesTest, APinchIsRecordedWheneverItFires) {
    const auto pinch = host_.makeRecognizer("UIPinchGestureRecognizer", host_.makeLabel("unused"));
    for (std::int64_t state = 1; state <= 3; ++state) {
        setState(pinch, state);
        const auto event = only(pinch);
        EXPECT_EQ(event.action(), "Pinch Gesture");
        EXPECT_EQ(event.label(), "");
        EXPECT_EQ(event.category(), "UIPinchGestureRecognizer");
    }
    host_.name(pinch, "Zoom");
    EXPECT_EQ(only(pinch).label(), "Zoom");
}

TEST_F(GesturesTest, ALongPressIsRecordedInFourStates) {
    const auto press = host_.makeRecognizer("UILongPressGestureRecognizer");
    for (const auto& [state, expected] :
         std::map<std::int64_t, bool>{{0, false}, {1, true}, {2, false}, {3, true}, {4, true}, {5, true}}) {
        setState(press, state);
        EXPECT_EQ(isRecorded(press), expected) << state;
    }
    setState(press, 1);
    const auto event = only(press);
    EXPECT_EQ(event.type, EventType::gesture);
    EXPECT_EQ(event.action(), "Long Press Gesture");
    EXPECT_EQ(event.category(), "UILongPressGestureRecognizer");
    EXPECT_EQ(event.label(), "");
}

TEST_F(GesturesTest, ALongPressIsCalledByTheCellUnderIt) {
    const auto table = makeTable(host_.makeView("UITableViewCell", {host_.makeLabel("Pears")}));
    EXPECT_EQ(only(pressIn(table, table, {10, 20})).label(), "Pears");
    EXPECT_EQ(only(pressIn(table, table, {0, 0})).label(), "") << "between the rows";
    const auto inside = host_.make("UIView", {{"superview", table}});
    EXPECT_EQ(only(pressIn(inside, table, {10, 20})).label(), "Pears");
    EXPECT_EQ(only(pressIn(host_.make("UIView"), table, {10, 20})).label(), "") << "outside any table";
    const auto named = pressIn(table, table, {10, 20});
    host_.name(named, "Fruit");
    EXPECT_EQ(only(named).label(), "Fruit");
}

TEST_F(GesturesTest, ALongPressOnARowThatIsNotLoadedHasNoLabel) {
    const auto table = makeTable({});
    EXPECT_EQ(only(pressIn(table, table, {10, 20})).label(), "");
}

TEST_F(GesturesTest, ALongPressInACircleOfViewsEnds) {
    const auto view = host_.make("UIView");
    host_.runtime.answer(view, "superview", view);
    EXPECT_EQ(only(pressIn(view, {}, {})).label(), "");
}

TEST_F(GesturesTest, ALongPressOnAnAlertIsAnAlert) {
    for (const auto* name : {"UIActionSheetiOSDismissActionView", "_UIAlertControllerInterfaceActionGroupView"}) {
        host_.addClass(name, "UIView");
        const auto press =
            host_.makeRecognizer("UILongPressGestureRecognizer", host_.makeView(name, {host_.makeLabel("Delete")}));
        setState(press, 1);
        const auto event = only(press);
        EXPECT_EQ(event.type, EventType::alert);
        EXPECT_EQ(event.text(LogAttribute::evtType), "alert");
        EXPECT_EQ(event.action(), "Long Press Gesture");
        EXPECT_EQ(event.label(), "Delete");
        EXPECT_EQ(event.category(), "UILongPressGestureRecognizer");
        setState(press, 2);
        EXPECT_FALSE(isRecorded(press));
    }
}

TEST_F(GesturesTest, APanIsRecordedWhenItEnds) {
    const auto pan = host_.makeRecognizer("UIPanGestureRecognizer", host_.makeView("UIView", {host_.makeLabel("Map")}));
    for (std::int64_t state = 0; state <= 5; ++state) {
        setState(pan, state);
        EXPECT_EQ(isRecorded(pan), state == 3) << state;
    }
    setState(pan, 3);
    const auto event = only(pan);
    EXPECT_EQ(event.type, EventType::gesture);
    EXPECT_EQ(event.action(), "Pan Gesture");
    EXPECT_EQ(event.label(), "Map");
    EXPECT_EQ(event.category(), "UIPanGestureRecognizer");
    host_.name(pan, "Drag");
    EXPECT_EQ(only(pan).label(), "Drag");
}

TEST_F(GesturesTest, APanOnATableCellIsACellSwipe) {
    host_.addClass("HostCell", "UITableViewCell");
    const auto cell = host_.makeView("HostCell", {host_.makeLabel("below")});
    host_.runtime.answer(cell, "textLabel", host_.makeLabel("Pears"));
    const auto pan = host_.makeRecognizer("UIPanGestureRecognizer", cell);
    setState(pan, 3);
    EXPECT_EQ(only(pan).action(), "Cell Swipe");
    EXPECT_EQ(host_.events[0].label(), "Pears");
}

TEST_F(GesturesTest, ListedRecognizersAndListedViewsAreIgnored) {
    for (const auto name : IgnoreLists::gestures) {
        const std::string className(name);
        const auto module = "Listed." + className; // the same name, of either kind
        host_.addClass(module.c_str(), "UITapGestureRecognizer");
        EXPECT_FALSE(isRecorded(host_.makeRecognizer(module.c_str()))) << className;
        if (!host_.runtime.objc_getClass(className.c_str())) host_.addClass(className.c_str(), "UIView");
        EXPECT_FALSE(isRecorded(tapOn(host_.make(className.c_str())))) << className;
        const auto longer = className + "2";
        host_.addClass(longer.c_str(), "UIView");
        EXPECT_TRUE(isRecorded(tapOn(host_.make(longer.c_str())))) << longer;
    }
}

TEST_F(GesturesTest, AScrollViewsOwnPanIsIgnored) {
    host_.addClass("UIScrollViewPanGestureRecognizer", "UIPanGestureRecognizer");
    const auto pan = host_.makeRecognizer("UIScrollViewPanGestureRecognizer", host_.make("UIScrollView"));
    setState(pan, 3);
    EXPECT_FALSE(isRecorded(pan));
}

TEST_F(GesturesTest, NoRecognizerOnASwitchOrASearchBarIsRecorded) {
    for (const auto* view : {"UISwitch", "UISearchBar"}) {
        for (const auto* className :
             {"UISwipeGestureRecognizer", "UIPinchGestureRecognizer", "UILongPressGestureRecognizer",
              "UITapGestureRecognizer", "UIPanGestureRecognizer"}) {
            const auto recognizer = host_.makeRecognizer(className, host_.make(view));
            setState(recognizer, 3);
            EXPECT_FALSE(isRecorded(recognizer)) << className << " on a " << view;
        }
    }
}

TEST_F(GesturesTest, TapsAndLongPressesOnAWebPageAreIgnored) {
    host_.addClass("UIWebBrowserSubview", "UIWebBrowserView");
    for (const auto* view : {"UIWebBrowserView", "UIWebBrowserSubview"}) {
        const auto page = host_.make(view);
        const auto recorded = [&](const char* className) {
            const auto recognizer = host_.makeRecognizer(className, page);
            setState(recognizer, 3);
            return isRecorded(recognizer);
        };
        EXPECT_FALSE(recorded("UITapGestureRecognizer"));
        EXPECT_FALSE(recorded("UILongPressGestureRecognizer"));
        EXPECT_TRUE(recorded("UIPanGestureRecognizer"));
        EXPECT_TRUE(recorded("UISwipeGestureRecognizer"));
        EXPECT_TRUE(recorded("UIPinchGestureRecognizer"));
    }
}

TEST_F(GesturesTest, ADisabledRecognizerIsNotRecorded) {
    const auto tap = tapOn({});
    host_.disable(tap);
    EXPECT_FALSE(isRecorded(tap));
}

TEST_F(GesturesTest, ACustomTitleIsTheCategoryAndMayBeIgnored) {
    host_.facade.titles[ITFClass::tapGesture] = "Taps";
    EXPECT_EQ(only(tapOn({})).category(), "Taps");
    host_.facade.ignored = {"Taps"};
    EXPECT_FALSE(isRecorded(tapOn({})));
}

TEST_F(GesturesTest, ARecognizerMadeAnotherWayHasNoTarget) {
    host_.make("UITapGestureRecognizer");
    EXPECT_THAT(host_.journal, Not(Contains("addTarget itself swizzleGestureAction:")));
}

} // namespace
} // namespace tallyfoot::testing
