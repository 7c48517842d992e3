#include "Facade/TallyfootTest.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

// What of an event is shown on the console, and which events are ignored.
namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

TEST_F(TallyfootTest, AnIgnoredCategoryIsNeitherPrintedNorRecorded) {
    start({"UISlider", "NoSuchClass"});
    Tallyfoot::setShowOutput(true);
    ::testing::internal::CaptureStdout();
    Tallyfoot::log(EventType::action, {{LogAttribute::evtCategory, "UISlider"}});
    Tallyfoot::log("a", {{LogAttribute::evtCategory, "UISlider"}}, {{"k", "v"}});
    Tallyfoot::logJSON(EventType::action, {{LogAttribute::evtCategory, "UISlider"}}, "{}");
    Tallyfoot::logJSON("a", {{LogAttribute::evtCategory, "UISlider"}});
    Tallyfoot::logEvent(EventType::action, {{"evtCategory", "UISlider"}});
    Tallyfoot::logEvent("a", {{"evtCategory", "UISlider"}});
    Tallyfoot::logJSONEvent(EventType::action, {{"evtCategory", "UISlider"}}, "[]");
    Tallyfoot::logJSONEvent("a", {{"evtCategory", "UISlider"}});
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_THAT(records(), IsEmpty());
    EXPECT_THAT(Tallyfoot::shared().ignoreClasses(), ElementsAre("UISlider"));
}

TEST_F(TallyfootTest, AnIgnoredClassWithACustomTitleIsIgnoredUnderThatTitle) {
    Tallyfoot::categoryCustomTitles({{"UISlider", "Slide"}, {"nothing", "x"}});
    start({"UISlider"});
    Tallyfoot::log(EventType::action, {{LogAttribute::evtCategory, "Slide"}});
    Tallyfoot::log(EventType::action, {{LogAttribute::evtCategory, "UISlider"}});
    ASSERT_THAT(records(), SizeIs(1));
    EXPECT_EQ(records()[0]["evtCategory"], "UISlider");
    EXPECT_THAT(Tallyfoot::categoryCustomTitles(), SizeIs(1));
}

TEST_F(TallyfootTest, TheTitlesThatAreSetMakeTheCategoriesAndReplaceTheFormerOnes) {
    EXPECT_EQ(category(ITFClass::tabBar, Tallyfoot::categoryCustomTitles()), "UITabBar");
    Tallyfoot::categoryCustomTitles({{"UITabBar", "Tabs"}, {"UIViewController", "Page"}});
    EXPECT_EQ(category(ITFClass::tabBar, Tallyfoot::categoryCustomTitles()), "Tabs");
    EXPECT_EQ(category(ITFClass::viewController, Tallyfoot::categoryCustomTitles()), "Page");
    Tallyfoot::categoryCustomTitles({{"UITabBar", "Bar"}, {"uiviewcontroller", "Page"}});
    EXPECT_EQ(category(ITFClass::tabBar, Tallyfoot::categoryCustomTitles()), "Bar");
    EXPECT_EQ(category(ITFClass::viewController, Tallyfoot::categoryCustomTitles()), "UIViewController");
}

TEST_F(TallyfootTest, AnotherTitleChangesTheIgnoredCategoryWithTheNextConfigure) {
    start({"UISlider", "UISlider"});
    Tallyfoot::categoryCustomTitles({{"UISlider", "Slide"}});
    EXPECT_THAT(Tallyfoot::shared().ignoreClasses(), ElementsAre("UISlider"));
    configure({"UISlider"});
    EXPECT_THAT(Tallyfoot::shared().ignoreClasses(), ElementsAre("Slide"));
    configure();
    EXPECT_THAT(Tallyfoot::shared().ignoreClasses(), IsEmpty());
}

TEST_F(TallyfootTest, DisabledEventsAreShownButNotWritten) {
    start();
    Tallyfoot::setIsEnabled(false);
    Tallyfoot::setShowOutput(true);
    ::testing::internal::CaptureStdout();
    Tallyfoot::log("purchase", {});
    EXPECT_THAT(::testing::internal::GetCapturedStdout(), HasSubstr("\"evtType: purchase\"\n"));
    EXPECT_THAT(records(), IsEmpty());
}

TEST_F(TallyfootTest, TheConsoleBlockShowsTheEventWithTheDevice) {
    start();
    Tallyfoot::setShowOutput(true);
    Tallyfoot::setScreenSize(375.9, 812.0);
    ::testing::internal::CaptureStdout();
    Tallyfoot::log("say \"hi\"", {{LogAttribute::evtId, "1"},
                                  {LogAttribute::evtLclTimestamp, "now"},
                                  {LogAttribute::userAgent, "own agent"},
                                  {LogAttribute::userIpAddress, "ip"}});
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "\"**************************************************\"\n"
                                                        "\"appName: Shop\"\n"
                                                        "\"deviceScrnDim: 375-812\"\n"
                                                        "\"evtId: 1\"\n"
                                                        "\"evtLclTimestamp: now\"\n"
                                                        "\"evtType: say \\\"hi\\\"\"\n"
                                                        "\"pgName: \"\n"
                                                        "\"userAgent: own agent\"\n"
                                                        "\"userIpAddress: ip\"\n"
                                                        "\"pgPrnt: iOS\"\n"
                                                        "\"**************************************************\"\n");
}

TEST_F(TallyfootTest, ACallersApplicationNameIsRecordedAndTheApplicationsIsShown) {
    start();
    Tallyfoot::setShowOutput(true);
    ::testing::internal::CaptureStdout();
    Tallyfoot::log("a", {{LogAttribute::appName, "own name"}});
    EXPECT_THAT(::testing::internal::GetCapturedStdout(), HasSubstr("\n\"appName: Shop\"\n"));
    EXPECT_EQ(records()[0]["appName"], "own name");
}

TEST_F(TallyfootTest, WhatIsShownOfTheDeviceIsNotRecorded) {
    start();
    Tallyfoot::setShowOutput(true);
    ::testing::internal::CaptureStdout();
    Tallyfoot::log("a", {});
    EXPECT_THAT(::testing::internal::GetCapturedStdout(), HasSubstr("\n\"userAgent: "));
    const auto record = records()[0];
    std::vector<std::string> keys;
    for (const auto& [key, value] : record.items()) keys.push_back(key);
    EXPECT_THAT(keys, ElementsAre("evtId", "evtLclTimestamp", "evtType", "pgName", "pgPrnt"));
}

TEST_F(TallyfootTest, IllFormedTextIsShownWithReplacementCharacters) {
    start();
    Tallyfoot::setShowOutput(true);
    ::testing::internal::CaptureStdout();
    Tallyfoot::log("a", {{LogAttribute::evtLabel, "a\x9B\x62"}});
    EXPECT_THAT(::testing::internal::GetCapturedStdout(), HasSubstr("\"evtLabel: a\xEF\xBF\xBD\x62\"\n"));
}

TEST_F(TallyfootTest, WithoutAnApplicationNothingIsShown) {
    Tallyfoot::setShowOutput(true);
    ::testing::internal::CaptureStdout();
    Tallyfoot::log("purchase", {});
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST_F(TallyfootTest, EventsBeforeConfigureAreShownAndLost) {
    setApplication("Shop");
    Tallyfoot::setShowOutput(true);
    ::testing::internal::CaptureStdout();
    Tallyfoot::log("purchase", {});
    EXPECT_THAT(::testing::internal::GetCapturedStdout(), HasSubstr("\"evtType: purchase\"\n"));
    EXPECT_THAT(records(), IsEmpty());
}

TEST_F(TallyfootTest, WithoutOutputNothingIsShown) {
    start();
    ::testing::internal::CaptureStdout();
    Tallyfoot::log("purchase", {});
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST_F(TallyfootTest, AnApplicationTakenBackIsNotShownAndTheRecordingGoesOn) {
    start();
    Tallyfoot::setAppInfo(nullptr);
    EXPECT_FALSE(Tallyfoot::appInfo());
    Tallyfoot::setShowOutput(true);
    ::testing::internal::CaptureStdout();
    Tallyfoot::log("purchase", {});
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_THAT(records(), SizeIs(1));
}

TEST_F(TallyfootTest, ConsoleOutputAndShowOutputAreOneSwitch) {
    Tallyfoot::setShowOutput(true);
    Tallyfoot::setConsoleOutput(false);
    EXPECT_FALSE(Tallyfoot::showOutput());
    Tallyfoot::setShowOutput(true);
    EXPECT_TRUE(Tallyfoot::consoleOutput());
}

TEST_F(TallyfootDeathTest, TheTraceOfAHostWithoutStandardOutputIsInNoFile) {
    EXPECT_EXIT(
        {
            ::close(STDOUT_FILENO);
            Tallyfoot::setShowOutput(true);
            start();
            Tallyfoot::log("a", {});
            Tallyfoot::log("b", {});
            std::_Exit(0);
        },
        ::testing::ExitedWithCode(0), "");
    EXPECT_THAT(stored(), Not(HasSubstr("****")));
    EXPECT_THAT(records(), SizeIs(2));
}

} // namespace
} // namespace tallyfoot::testing
