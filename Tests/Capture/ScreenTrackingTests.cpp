#include "Capture/CaptureHost.h"

#include "Tallyfoot/Capture/IgnoreLists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyfoot::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class ScreenTrackingTest : public ::testing::Test {
protected:
    ScreenTrackingTest() { host_.capture.configureSwizzle(); }

    void appear(ObjectRef controller) { host_.send(controller, "viewWillAppear:", {true}); }
    void disappear(ObjectRef controller) { host_.send(controller, "viewWillDisappear:", {true}); }
    void pass(std::chrono::nanoseconds time) { host_.facade.manualClock.advance(time); }
    ObjectRef titled(const char* title) { return host_.make("UIViewController", {{"title", std::string(title)}}); }

    CaptureHost host_;
    const ObjectRef screen_ = titled("Basket");
};

TEST_F(ScreenTrackingTest, AScreenBecomesAnEventWhenItGoes) {
    appear(screen_);
    pass(75'500ms);
    EXPECT_THAT(host_.events, IsEmpty());
    disappear(screen_);
    ASSERT_THAT(host_.events, SizeIs(1));
    EXPECT_EQ(host_.events[0].type, EventType::screen);
    EXPECT_EQ(host_.events[0].attributes, (Attributes{{LogAttribute::tmspent, "75.50"},
                                                      {LogAttribute::evtCategory, "UIViewController"},
                                                      {LogAttribute::screenTitle, "Basket"},
                                                      {LogAttribute::evtLabel, "Basket"}}));
}

TEST_F(ScreenTrackingTest, NeitherHookRunsThePlatformsOwn) {
    appear(screen_);
    disappear(screen_);
    EXPECT_THAT(host_.journal, IsEmpty());
}

TEST_F(ScreenTrackingTest, TheSizeOfTheMainScreenIsToldWhenAskedForAndWhenAScreenAppears) {
    host_.runtime.mainScreen = {390, 844};
    host_.capture.reportScreenSize();
    host_.runtime.mainScreen = {844, 390};
    appear(screen_);
    EXPECT_THAT(host_.facade.screenSizes, ElementsAre(390, 844));
}

TEST_F(ScreenTrackingTest, APlatformWithoutAScreenTellsNoSize) {
    host_.capture.reportScreenSize();
    appear(screen_);
    EXPECT_THAT(host_.facade.screenSizes, IsEmpty());
}

TEST_F(ScreenTrackingTest, TheTitleOfTheNavigationItemStandsInForNone) {
    const auto item = host_.make("UINavigationItem", {{"title", std::string("Item")}});
    const auto screen = host_.make("UIViewController", {{"navigationItem", item}});
    appear(screen);
    disappear(screen);
    EXPECT_EQ(host_.events.at(0).text(LogAttribute::screenTitle), "Item");
    EXPECT_EQ(host_.events.at(0).label(), "Item");
}

TEST_F(ScreenTrackingTest, AnEmptyTitleIsATitle) {
    const auto item = host_.make("UINavigationItem", {{"title", std::string("Item")}});
    const auto screen = host_.make("UIViewController", {{"title", std::string()}, {"navigationItem", item}});
    appear(screen);
    disappear(screen);
    EXPECT_EQ(host_.events.at(0).text(LogAttribute::screenTitle), "");
}

TEST_F(ScreenTrackingTest, WithoutAnyTitleBothAreEmpty) {
    const auto screen = host_.make("UIViewController", {{"navigationItem", host_.make("UINavigationItem")}});
    appear(screen);
    disappear(screen);
    EXPECT_EQ(host_.events.at(0).text(LogAttribute::screenTitle), "");
    EXPECT_EQ(host_.events.at(0).label(), "");
}

TEST_F(ScreenTrackingTest, TheCustomNameIsTheLabelOnly) {
    host_.name(screen_, "Cart");
    appear(screen_);
    disappear(screen_);
    EXPECT_EQ(host_.events.at(0).label(), "Cart");
    EXPECT_EQ(host_.events.at(0).text(LogAttribute::screenTitle), "Basket");
}

TEST_F(ScreenTrackingTest, ScreensOfTheSystemNeverCount) {
    for (const auto name : IgnoreLists::screenControllers) {
        const std::string className(name);
        if (!host_.runtime.objc_getClass(className.c_str())) host_.addClass(className.c_str(), "UIViewController");
        const auto screen = host_.make(className.c_str());
        appear(screen);
        disappear(screen);
    }
    EXPECT_THAT(host_.events, IsEmpty());
}

TEST_F(ScreenTrackingTest, ASubclassOrALongerNameCounts) {
    host_.addClass("UINavigationControllerOfMine", "UINavigationController");
    const auto screen = host_.make("UINavigationControllerOfMine");
    appear(screen);
    disappear(screen);
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(ScreenTrackingTest, ADisabledOneIsNotRecorded) {
    host_.disable(screen_);
    appear(screen_);
    disappear(screen_);
    EXPECT_THAT(host_.events, IsEmpty());
}

TEST_F(ScreenTrackingTest, DisabledWhileShownIsStillRecorded) {
    appear(screen_);
    host_.disable(screen_);
    disappear(screen_);
    EXPECT_THAT(host_.events, SizeIs(1));
}

TEST_F(ScreenTrackingTest, EnabledWhileShownIsNotRecorded) {
    host_.disable(screen_);
    appear(screen_);
    host_.send(screen_, "setLogEnabled:", {true});
    disappear(screen_);
    EXPECT_THAT(host_.events, IsEmpty());
}

TEST_F(ScreenTrackingTest, AppearingTwiceCountsFromTheFirstTime) {
    appear(screen_);
    pass(2s);
    appear(screen_);
    pass(1s);
    disappear(screen_);
    disappear(screen_);
    ASSERT_THAT(host_.events, SizeIs(1));
    EXPECT_EQ(host_.events[0].text(LogAttribute::tmspent), "3.00");
}

TEST_F(ScreenTrackingTest, DisappearingWithoutHavingAppearedGivesNothing) {
    disappear(screen_);
    EXPECT_THAT(host_.events, IsEmpty());
    EXPECT_EQ(host_.facade.output.text(), "");
}

TEST_F(ScreenTrackingTest, AClockSetBackGivesANegativeTime) {
    appear(screen_);
    pass(-1500ms);
    disappear(screen_);
    EXPECT_EQ(host_.events.at(0).text(LogAttribute::tmspent), "-1.50");
}

TEST_F(ScreenTrackingTest, ACustomTitleIsTheCategoryAndMayBeIgnored) {
    host_.facade.titles[ITFClass::viewController] = "Page";
    appear(screen_);
    disappear(screen_);
    EXPECT_EQ(host_.events.at(0).category(), "Page");
    host_.facade.ignored = {"Page"};
    appear(screen_);
    disappear(screen_);
    EXPECT_THAT(host_.events, SizeIs(1));
    host_.facade.ignored = {"UIViewController"};
    appear(screen_);
    disappear(screen_);
    EXPECT_THAT(host_.events, SizeIs(2)) << "the class's name is not its category";
}

TEST_F(ScreenTrackingTest, TheConsoleShowsTheNumberOfScreens) {
    const auto other = titled("Other");
    appear(screen_);
    appear(screen_);
    appear(other);
    disappear(screen_);
    EXPECT_THAT(host_.facade.output.lines(),
                ElementsAre("\"active screen: \"", "1", "\"active screen: \"", "2", "\"active screen: \"", "1"));
    host_.facade.output.clear();
    host_.facade.showOutput = false;
    disappear(other);
    EXPECT_EQ(host_.facade.output.text(), "");
}

TEST_F(ScreenTrackingTest, TheCurrentTitleIsThatOfTheScreenShownLast) {
    EXPECT_EQ(host_.facade.currentScreenTitle, "");
    appear(screen_);
    EXPECT_EQ(host_.facade.currentScreenTitle, "Basket");
    const auto sheet = titled("Sheet");
    appear(sheet);
    EXPECT_EQ(host_.facade.currentScreenTitle, "Sheet");
    disappear(sheet);
    EXPECT_EQ(host_.facade.currentScreenTitle, "Basket") << "it never went";
    disappear(screen_);
    EXPECT_EQ(host_.facade.currentScreenTitle, "");
}

TEST_F(ScreenTrackingTest, AScreenThatAppearsAgainIsTheCurrentOneByItsNewTitle) {
    const auto other = titled("Other");
    appear(screen_);
    appear(other);
    host_.runtime.answer(screen_, "title", std::string("Basket (1)"));
    appear(screen_);
    EXPECT_EQ(host_.facade.currentScreenTitle, "Basket (1)");
}

TEST_F(ScreenTrackingTest, AnUntrackedScreenIsNotTheCurrentOne) {
    appear(screen_);
    appear(host_.make("UIAlertController", {{"title", std::string("Sure?")}}));
    EXPECT_EQ(host_.facade.currentScreenTitle, "Basket");
}

} // namespace
} // namespace tallyfoot::testing
