#include "Support/ScriptedServer.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Facade/TallyfootImplementation.h"
#include "Tallyfoot/Tallyfoot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <regex>
#include <string>
#include <thread>
#include <vector>

namespace tallyfoot::testing {
namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

// A host process of its own: every test runs in one, with its own folders.
class TallyfootTest : public ::testing::Test {
protected:
    TallyfootTest() {
        ::setenv("XDG_DATA_HOME", (root_ / "data").c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", (root_ / "config").c_str(), 1);
        ::setenv("TALLYFOOT_MAIN_BUNDLE", (root_ / "bundle").c_str(), 1);
        Tallyfoot::setShowOutput(false);
        configuration_->setUploadPath("http://127.0.0.1:1/upload"); // nobody listens there
    }

    void configure(const std::vector<std::string>& ignoreClasses = {}) {
        Tallyfoot::configure(configuration_, ignoreClasses, [this] {
            ++authenticationsAsked_;
            return std::make_shared<Authentication>("user-1", "token-1");
        });
    }

    static void setApplication(const std::string& appName) {
        Tallyfoot::setAppInfo(std::make_shared<ApplicationInfo>(appName, "id", "area", "area-id"));
    }

    void start(const std::vector<std::string>& ignoreClasses = {}) {
        setApplication("Shop");
        configure(ignoreClasses);
    }

    std::string stored(const std::string& appName = "Shop") const {
        std::string all;
        const std::filesystem::path folder = root_ / "data/Tallyfoot/" + appName + "/Events";
        if (std::filesystem::exists(folder))
            for (const auto& file : std::filesystem::directory_iterator(folder)) all += readFile(file.path());
        return all;
    }

    std::vector<json> records(const std::string& appName = "Shop") const {
        std::vector<json> parsed;
        const std::string text = stored(appName);
        for (std::size_t begin = 0; begin < text.size();) {
            const auto end = text.find("jsonsplit", begin);
            parsed.push_back(json::parse(text.substr(begin, end - begin)));
            begin = end + 9;
        }
        return parsed;
    }

    TemporaryFolder root_;
    std::shared_ptr<UploadConfiguration> configuration_ = std::make_shared<UploadConfiguration>(3600, 1000000);
    int authenticationsAsked_ = 0;
};

TEST(TallyfootSettings, StartAsAHostExpectsThem) {
    EXPECT_TRUE(Tallyfoot::isEnabled());
    EXPECT_TRUE(Tallyfoot::showOutput());
    EXPECT_TRUE(Tallyfoot::consoleOutput());
    EXPECT_FALSE(Tallyfoot::isSwizzled());
    EXPECT_FALSE(Tallyfoot::ignoreFileSizeThreshold());
    EXPECT_EQ(Tallyfoot::pageParent(), std::nullopt);
    EXPECT_EQ(Tallyfoot::appInfo(), nullptr);
    EXPECT_THAT(Tallyfoot::categoryCustomTitles(), IsEmpty());
    EXPECT_THAT(Tallyfoot::shared().ignoreClasses(), IsEmpty());
    EXPECT_THAT(Tallyfoot::shared().logs(), IsEmpty());
}

TEST_F(TallyfootTest, ALoggedEventCarriesTheGeneratedAttributes) {
    start();
    Tallyfoot::log(EventType::action, {{LogAttribute::evtLabel, "Buy"}});
    ASSERT_THAT(records(), SizeIs(1));
    const auto record = records()[0];
    EXPECT_EQ(record.size(), 6U);
    EXPECT_EQ(record["evtLabel"], "Buy");
    EXPECT_EQ(record["evtType"], "action");
    EXPECT_EQ(record["pgName"], "");
    EXPECT_EQ(record["pgPrnt"], "iOS");
    EXPECT_TRUE(std::regex_match(record["evtId"].get<std::string>(),
                                 std::regex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")));
    EXPECT_TRUE(std::regex_match(record["evtLclTimestamp"].get<std::string>(),
                                 std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \+0000)")));
}

TEST_F(TallyfootTest, AnEventTypeWithCustomDataInBraces) {
    start();
    Tallyfoot::log(EventType::action, {{LogAttribute::evtLabel, "Buy"}}, {{"sku", "A-1"}, {"quantity", 2}});
    EXPECT_EQ(records()[0]["custom"], json::parse(R"([{"sku":"A-1","quantity":2}])"));
}

TEST_F(TallyfootTest, ATypeNamedByTheHostWithoutAnyAttribute) {
    start();
    Tallyfoot::log("purchase", {});
    EXPECT_EQ(records()[0]["evtType"], "purchase");
}

TEST_F(TallyfootTest, ATypeNamedByTheHostReplacesTheOneInTheAttributes) {
    start();
    Tallyfoot::log("purchase", {{LogAttribute::evtType, "other"}});
    EXPECT_EQ(records()[0]["evtType"], "purchase");
}

TEST_F(TallyfootTest, EveryFormNamedByTheHostWritesThatName) {
    start();
    Tallyfoot::log("a", {{LogAttribute::evtType, "other"}});
    Tallyfoot::logJSON("b", {{LogAttribute::evtType, "other"}});
    Tallyfoot::logEvent("c", {{"evtType", "other"}});
    Tallyfoot::logJSONEvent("d", {{"evtType", "other"}});
    Tallyfoot::log("", {});
    std::vector<std::string> types;
    for (const auto& record : records()) types.push_back(record["evtType"]);
    EXPECT_THAT(types, ElementsAre("a", "b", "c", "d", ""));
}

TEST_F(TallyfootTest, EveryFormWithAnEventTypeWritesItsText) {
    start();
    Tallyfoot::log(EventType::crash, {{LogAttribute::evtLabel, "x"}});
    Tallyfoot::logJSON(EventType::gesture, {{LogAttribute::evtLabel, "x"}});
    Tallyfoot::logEvent(EventType::swipe, {{"evtLabel", "x"}});
    Tallyfoot::logJSONEvent(EventType::progress, {{"evtLabel", "x"}});
    std::vector<std::string> types;
    for (const auto& record : records()) types.push_back(record["evtType"]);
    EXPECT_THAT(types, ElementsAre("crash", "gesture", "swipe", "progress"));
}

TEST_F(TallyfootTest, ATypeInTheAttributesWinsOverTheEventType) {
    start();
    Tallyfoot::log(EventType::action, {{LogAttribute::evtType, "own"}});
    EXPECT_EQ(records()[0]["evtType"], "own");
}

TEST_F(TallyfootTest, JSONWithoutAttributesOrCustomTextRecordsAndPrintsNothing) {
    start();
    Tallyfoot::setShowOutput(true);
    ::testing::internal::CaptureStdout();
    Tallyfoot::logJSON(EventType::screen, {});
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_THAT(records(), IsEmpty());
}

TEST_F(TallyfootTest, AJSONObjectBecomesAnArrayOfOne) {
    start();
    Tallyfoot::logJSON(EventType::action, {}, R"({"a":1})");
    EXPECT_EQ(records()[0]["custom"], json::parse(R"([{"a":1}])"));
}

TEST_F(TallyfootTest, AJSONObjectIsStoredCompactAndATextThatIsNoJSONPrettyPrinted) {
    start();
    const Attributes own{{LogAttribute::evtId, "1"},
                         {LogAttribute::evtLclTimestamp, "now"},
                         {LogAttribute::screenTitle, "a/b"},
                         {LogAttribute::window, "web"}};
    Tallyfoot::logJSON(EventType::action, own, R"({"a":"b"})");
    Tallyfoot::logJSON(EventType::action, own, "abc");
    EXPECT_EQ(stored(), R"({"custom":[{"a":"b"}],"evtId":"1","evtLclTimestamp":"now","evtType":"action",)"
                        R"("pgName":"a\/b","pgPrnt":"web"}jsonsplit)"
                        "{\n"
                        "  \"custom\" : \"[abc]\",\n"
                        "  \"evtId\" : \"1\",\n"
                        "  \"evtLclTimestamp\" : \"now\",\n"
                        "  \"evtType\" : \"action\",\n"
                        "  \"pgName\" : \"a\\/b\",\n"
                        "  \"pgPrnt\" : \"web\"\n"
                        "}jsonsplit");
}

TEST_F(TallyfootTest, AnEmptyJSONTextBecomesAnEmptyArray) {
    start();
    Tallyfoot::logJSON(EventType::action, {}, "");
    EXPECT_EQ(records()[0]["custom"], json::array());
}

TEST_F(TallyfootTest, AnEmptyDictionaryIsCustomDataAndNoneIsNot) {
    start();
    Tallyfoot::log(EventType::action, {}, CustomAttributes());
    Tallyfoot::log(EventType::action, {}, std::nullopt);
    ASSERT_THAT(records(), SizeIs(1));
    EXPECT_EQ(records()[0]["custom"], json::parse("[{}]"));
}

TEST_F(TallyfootTest, CustomDataReplacesTheAttributeOfThatNameAndNoneLeavesIt) {
    start();
    Tallyfoot::logJSON(EventType::action, {{LogAttribute::custom, "[1]"}}, "[2]");
    Tallyfoot::logJSON(EventType::action, {{LogAttribute::custom, "[1]"}});
    Tallyfoot::log(EventType::action, {{LogAttribute::custom, "[1]"}}, {{"nan", std::nan("")}});
    std::vector<std::string> custom;
    for (const auto& record : records()) custom.push_back(record["custom"]);
    EXPECT_THAT(custom, ElementsAre("[2]", "[1]", "[1]"));
}

TEST_F(TallyfootTest, AJSONTextThatIsNoJSONStaysAText) {
    start();
    Tallyfoot::logJSON(EventType::action, {}, "abc");
    EXPECT_EQ(records()[0]["custom"], "[abc]");
}

TEST_F(TallyfootTest, ABracketWithACombiningMarkIsNoBracket) {
    start();
    Tallyfoot::logJSON(EventType::action, {}, "[\xCC\x81]");
    EXPECT_EQ(records()[0]["custom"], "[[\xCC\x81]]");
}

TEST_F(TallyfootTest, JSONUnderATypeNamedByTheHost) {
    start();
    Tallyfoot::logJSON("purchase", {});
    Tallyfoot::logJSON("purchase", {{LogAttribute::evtLabel, "x"}}, "[1,2]");
    ASSERT_THAT(records(), SizeIs(2));
    EXPECT_EQ(records()[0]["evtType"], "purchase");
    EXPECT_EQ(records()[1]["custom"], "[1,2]");
}

TEST_F(TallyfootTest, AttributesByRecordKeyDropUnknownKeys) {
    start();
    Tallyfoot::logEvent("purchase", {{"pgName", "Basket"}, {"foo", "x"}}, {{"sku", "A-1"}});
    Tallyfoot::logEvent(EventType::screen, {{"pgName", "Basket"}});
    ASSERT_THAT(records(), SizeIs(2));
    EXPECT_EQ(records()[0]["pgName"], "Basket");
    EXPECT_FALSE(records()[0].contains("foo"));
    EXPECT_EQ(records()[0]["custom"], json::parse(R"([{"sku":"A-1"}])"));
    EXPECT_EQ(records()[1]["evtType"], "screen");
}

TEST_F(TallyfootTest, AttributesByRecordKeyWithJSON) {
    start();
    Tallyfoot::logJSONEvent("purchase", {{"pgName", "Basket"}}, "[]");
    Tallyfoot::logJSONEvent(EventType::alert, {{"evtLabel", "x"}}, R"([{"k":"v"}])");
    EXPECT_EQ(records()[0]["custom"], json::array());
    EXPECT_EQ(records()[1]["evtType"], "alert");
    EXPECT_EQ(records()[1]["custom"], json::parse(R"([{"k":"v"}])"));
}

TEST_F(TallyfootTest, OnlyUnknownKeysAndAnEventTypeRecordNothing) {
    start();
    Tallyfoot::logEvent(EventType::screen, {{"foo", "x"}});
    EXPECT_THAT(records(), IsEmpty());
}

TEST_F(TallyfootTest, CustomDataThatCannotBeSerialisedIsLeftOutAndTheEventKept) {
    start();
    Tallyfoot::log(EventType::action, {{LogAttribute::evtLabel, "x"}}, {{"nan", std::nan("")}});
    ASSERT_THAT(records(), SizeIs(1));
    EXPECT_FALSE(records()[0].contains("custom"));
}

TEST_F(TallyfootTest, CustomDataOfTheJSONLibrary) {
    start();
    Tallyfoot::log(EventType::action, {{LogAttribute::evtLabel, "x"}},
                   json{{"deep", {{"list", {1, 2.5, nullptr, true}}}}});
    EXPECT_EQ(records()[0]["custom"], json::parse(R"([{"deep":{"list":[1,2.5,null,true]}}])"));
}

TEST_F(TallyfootTest, TheCallersValuesWinOverTheGeneratedOnes) {
    start();
    Tallyfoot::log(EventType::action, {{LogAttribute::evtId, "own id"},
                                       {LogAttribute::evtLclTimestamp, "own time"},
                                       {LogAttribute::screenTitle, "own page"},
                                       {LogAttribute::window, "own parent"}});
    EXPECT_EQ(records()[0]["evtId"], "own id");
    EXPECT_EQ(records()[0]["evtLclTimestamp"], "own time");
    EXPECT_EQ(records()[0]["pgName"], "own page");
    EXPECT_EQ(records()[0]["pgPrnt"], "own parent");
}

TEST_F(TallyfootTest, ThePageParentIsOnEveryLaterEventUntilUnset) {
    start();
    Tallyfoot::setPageParent("web");
    EXPECT_EQ(Tallyfoot::pageParent(), "web");
    Tallyfoot::log("a", {});
    Tallyfoot::setPageParent(std::nullopt);
    Tallyfoot::log("b", {});
    EXPECT_EQ(records()[0]["pgPrnt"], "web");
    EXPECT_EQ(records()[1]["pgPrnt"], "iOS");
}

TEST_F(TallyfootTest, AnEmptyPageParentIsOne) {
    start();
    Tallyfoot::setPageParent("");
    Tallyfoot::log("a", {});
    EXPECT_EQ(records()[0]["pgPrnt"], "");
}

TEST_F(TallyfootTest, TheScreenTitleComesFromAutomaticCapture) {
    Tallyfoot::Implementation::shared().pipeline.setCurrentScreenTitle("Home");
    start();
    Tallyfoot::log("a", {});
    EXPECT_EQ(records()[0]["pgName"], "Home");
}

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

TEST_F(TallyfootTest, TheApplicationBeforeConfigureStartsNothingAndConfigureDoes) {
    setApplication("Shop");
    Tallyfoot::log("lost", {});
    EXPECT_EQ(authenticationsAsked_, 0);
    configure();
    EXPECT_EQ(authenticationsAsked_, 1);
    Tallyfoot::log("kept", {});
    ASSERT_THAT(records(), SizeIs(1));
    EXPECT_EQ(records()[0]["evtType"], "kept");
}

TEST_F(TallyfootTest, ConfigureBeforeTheApplicationStartsWithTheApplication) {
    configure();
    Tallyfoot::log("lost", {});
    EXPECT_EQ(authenticationsAsked_, 0);
    setApplication("Shop");
    Tallyfoot::log("kept", {});
    EXPECT_THAT(records(), SizeIs(1));
}

TEST_F(TallyfootTest, TheSameApplicationNameAgainChangesNothing) {
    start();
    Tallyfoot::log("a", {});
    Tallyfoot::setAppInfo(std::make_shared<ApplicationInfo>("Shop", "another id", "x", "y"));
    Tallyfoot::log("b", {});
    EXPECT_THAT(records(), SizeIs(2));
    EXPECT_EQ(authenticationsAsked_, 1);
}

TEST_F(TallyfootTest, TheSameApplicationNameAgainUploadsNoOldApplication) {
    start();
    Tallyfoot::log("a", {});
    setApplication("Bank");
    ::testing::internal::CaptureStdout();
    Tallyfoot::setShowOutput(true);
    setApplication("Bank");
    const auto quiet = ::testing::internal::GetCapturedStdout();
    ::testing::internal::CaptureStdout();
    setApplication("Cafe");
    EXPECT_THAT(::testing::internal::GetCapturedStdout(), HasSubstr("calling upload for old app Shop"));
    EXPECT_THAT(quiet, Not(HasSubstr("calling upload for old app")));
}

TEST_F(TallyfootTest, AnotherApplicationNameSwitches) {
    start();
    Tallyfoot::log("a", {});
    setApplication("Bank");
    Tallyfoot::log("b", {});
    EXPECT_THAT(records("Shop"), IsEmpty());
    ASSERT_THAT(records("Bank"), SizeIs(1));
    EXPECT_EQ(records("Bank")[0]["evtType"], "b");
}

TEST_F(TallyfootTest, ConfigureAgainKeepsTheRecordingAndReplacesTheIgnoredClasses) {
    start({"UISlider"});
    configure({"UIButton"});
    EXPECT_EQ(authenticationsAsked_, 1);
    Tallyfoot::log(EventType::action, {{LogAttribute::evtCategory, "UISlider"}});
    Tallyfoot::log(EventType::action, {{LogAttribute::evtCategory, "UIButton"}});
    EXPECT_THAT(records(), SizeIs(1));
}

TEST_F(TallyfootTest, InterceptionsAreInstalledOnceByWhateverComesFirst) {
    int installed = 0;
    Tallyfoot::Implementation::shared().setSeams({.installInterceptions = [&] { ++installed; }});
    EXPECT_FALSE(Tallyfoot::isSwizzled());
    Tallyfoot::modifyEnvironment([](Environment& environment) { environment.setUploadPath("x"); });
    EXPECT_TRUE(Tallyfoot::isSwizzled());
    Tallyfoot::setEnvironment(std::make_shared<Environment>());
    Tallyfoot::configureSwizzle();
    start();
    EXPECT_EQ(installed, 1);
}

TEST_F(TallyfootTest, WhoSaysThatTheInterceptionsAreInstalledInstallsThem) {
    int installed = 0;
    Tallyfoot::Implementation::shared().setSeams({.installInterceptions = [&] { ++installed; }});
    Tallyfoot::setIsSwizzled(true);
    start();
    EXPECT_EQ(installed, 0);
    Tallyfoot::setIsSwizzled(false);
    configure();
    EXPECT_EQ(installed, 1);
}

TEST_F(TallyfootTest, InterceptionsFollowAChangeOfTheEnvironmentThatThrows) {
    Tallyfoot::modifyEnvironment([](Environment&) { throw std::runtime_error("host"); });
    EXPECT_TRUE(Tallyfoot::isSwizzled());
}

TEST_F(TallyfootTest, ConfigureStartsTheRecordingThenInstallsThenIgnores) {
    std::vector<std::string> order;
    Tallyfoot::Implementation::shared().setSeams({.installInterceptions = [&] { order.emplace_back("interceptions"); },
                                                  .installCrashHooks =
                                                      [&] {
                                                          order.emplace_back("crash hooks");
                                                          EXPECT_THAT(Tallyfoot::shared().ignoreClasses(), IsEmpty());
                                                      }});
    setApplication("Shop");
    Tallyfoot::configure(configuration_, {"UISlider"}, [&] {
        order.emplace_back("closure");
        return std::make_shared<Authentication>("user-1", "token-1");
    });
    EXPECT_THAT(order, ElementsAre("closure", "interceptions", "crash hooks"));
    EXPECT_THAT(Tallyfoot::shared().ignoreClasses(), ElementsAre("UISlider"));
}

TEST_F(TallyfootTest, CrashHooksAreInstalledAtEveryConfigure) {
    int installed = 0;
    Tallyfoot::Implementation::shared().setSeams({.installCrashHooks = [&] { ++installed; }});
    start();
    configure();
    EXPECT_EQ(installed, 2);
}

TEST_F(TallyfootTest, InterceptionsFollowTheEnvironmentThatIsSet) {
    std::shared_ptr<Environment> found;
    Tallyfoot::Implementation::shared().setSeams({.installInterceptions = [&] { found = Tallyfoot::environment(); }});
    const auto environment = std::make_shared<Environment>();
    Tallyfoot::setEnvironment(environment);
    EXPECT_EQ(found, environment);
}

TEST_F(TallyfootTest, TheEnvironmentIsMadeOnFirstAccessAndIsTheSameAgain) {
    const auto environment = Tallyfoot::environment();
    ASSERT_TRUE(environment);
    EXPECT_EQ(environment, Tallyfoot::environment());
    EXPECT_EQ(environment->uploadPath(), "no such path");
}

TEST_F(TallyfootTest, AnEnvironmentTakenBackIsReplacedByADefaultOne) {
    Tallyfoot::setEnvironment(nullptr);
    ASSERT_TRUE(Tallyfoot::environment());
    EXPECT_EQ(Tallyfoot::environment()->uploadPath(), "no such path");
}

TEST_F(TallyfootTest, TheSharedInstanceKeepsNoLogs) {
    start();
    Tallyfoot::log("a", {});
    EXPECT_EQ(&Tallyfoot::shared(), &Tallyfoot::shared());
    EXPECT_THAT(Tallyfoot::shared().logs(), IsEmpty());
}

TEST_F(TallyfootTest, TheTokenIsTheOneInUse) {
    start();
    EXPECT_EQ(Tallyfoot::shared().authenticationToken(), "token-1");
}

TEST_F(TallyfootTest, TheUploadConfigurationIsTheDefaultUntilConfigured) {
    EXPECT_EQ(Tallyfoot::shared().uploadConfiguration(), UploadConfiguration::defaultConfiguration());
    start();
    EXPECT_EQ(Tallyfoot::shared().uploadConfiguration(), configuration_);
}

TEST_F(TallyfootTest, NoConfigurationIsTheDefaultOne) {
    start();
    Tallyfoot::configure(nullptr, {}, nullptr);
    EXPECT_EQ(Tallyfoot::shared().uploadConfiguration(), UploadConfiguration::defaultConfiguration());
    EXPECT_EQ(processSettings().uploadConfiguration.copy(), UploadConfiguration::defaultConfiguration());
}

TEST_F(TallyfootTest, TheClosureMayUseTheLibrary) {
    setApplication("Shop");
    Tallyfoot::configure(configuration_, {}, [] {
        Tallyfoot::log("from the closure", {});
        setApplication("Bank");
        return std::make_shared<Authentication>("user-1", "token-1");
    });
    Tallyfoot::log("after", {});
    EXPECT_THAT(records("Bank"), SizeIs(1));
}

TEST_F(TallyfootTest, AClosureThatThrowsLeavesNoRecorderAndTheNextConfigureTriesAgain) {
    setApplication("Shop");
    Tallyfoot::configure(configuration_, {},
                         []() -> std::shared_ptr<Authentication> { throw std::runtime_error("host"); });
    Tallyfoot::log("lost", {});
    configure();
    Tallyfoot::log("kept", {});
    EXPECT_THAT(records(), SizeIs(1));
}

TEST_F(TallyfootTest, AClosureThatThrewIsAskedAgainWhenTheSameApplicationIsSetAgain) {
    int asked = 0;
    Tallyfoot::configure(configuration_, {}, [&] {
        if (++asked == 1) throw std::runtime_error("host");
        return std::make_shared<Authentication>("user-1", "token-1");
    });
    const auto application = std::make_shared<ApplicationInfo>("Shop", "id", "area", "area-id");
    Tallyfoot::setAppInfo(application);
    Tallyfoot::setAppInfo(application);
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(Tallyfoot::shared().authenticationToken(), "token-1");
}

TEST_F(TallyfootTest, TheClosureOfTheLastConfigureIsAskedWhenTheServerRejectsTheToken) {
    ScriptedServer server;
    server.script({.answer = ScriptedServer::response(R"({"data":{"response":{"statusCode":"10000003"}}})")});
    configuration_->setUploadPath(server.url());
    start();
    const auto asked = std::make_shared<std::promise<void>>();
    Tallyfoot::configure(configuration_, {}, [asked] {
        asked->set_value();
        return std::make_shared<Authentication>("user-1", "token-2");
    });
    Tallyfoot::setIgnoreFileSizeThreshold(true); // the event below is sent
    Tallyfoot::log("a", {});
    EXPECT_EQ(asked->get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready);
    EXPECT_TRUE(server.request(0).hasLine("cookie: token-1"));
    EXPECT_EQ(authenticationsAsked_, 1);
}

TEST_F(TallyfootTest, AClosureThatConfiguresAnotherAndThrowsGivesWayToThatOne) {
    setApplication("Shop");
    Tallyfoot::configure(configuration_, {}, [this]() -> std::shared_ptr<Authentication> {
        configure();
        throw std::runtime_error("host");
    });
    EXPECT_EQ(Tallyfoot::shared().authenticationToken(), "token-1");
}

TEST_F(TallyfootTest, SeveralClosuresThatThrowOneAfterAnotherGiveWayToTheLast) {
    setApplication("Shop");
    const auto failing = [this](auto&& next) {
        return [this, next]() -> std::shared_ptr<Authentication> {
            Tallyfoot::configure(configuration_, {}, next);
            throw std::runtime_error("host");
        };
    };
    const auto last = [] { return std::make_shared<Authentication>("user-1", "token-1"); };
    Tallyfoot::configure(configuration_, {}, failing(failing(failing(last))));
    EXPECT_EQ(Tallyfoot::shared().authenticationToken(), "token-1");
}

TEST_F(TallyfootTest, AClosureThatConfiguresItselfAndThrowsIsGivenUp) {
    int asked = 0;
    Tallyfoot::AuthenticationClosure closure;
    closure = [&]() -> std::shared_ptr<Authentication> {
        ++asked;
        Tallyfoot::configure(configuration_, {}, closure);
        throw std::runtime_error("host");
    };
    setApplication("Shop");
    Tallyfoot::configure(configuration_, {}, closure);
    EXPECT_LT(asked, 20);
    configure();
    EXPECT_EQ(Tallyfoot::shared().authenticationToken(), "token-1");
}

TEST_F(TallyfootTest, NoClosureLeavesTheFormerOne) {
    start();
    Tallyfoot::configure(configuration_, {}, nullptr);
    setApplication("Bank");
    Tallyfoot::log("a", {});
    EXPECT_THAT(records("Bank"), SizeIs(1));
}

TEST_F(TallyfootTest, AnApplicationSetWhileTheClosureIsAskedGetsTheFirstEvent) {
    setApplication("Shop");
    Tallyfoot::configure(configuration_, {}, [] {
        std::thread([] { setApplication("Bank"); }).join();
        return std::make_shared<Authentication>("user-1", "token-1");
    });
    Tallyfoot::log("a", {});
    EXPECT_THAT(records("Shop"), IsEmpty());
    EXPECT_THAT(records("Bank"), SizeIs(1));
}

TEST_F(TallyfootTest, TheLastOfManySwitchesAtOnceIsTheOneThatRecords) {
    start();
    std::vector<std::thread> threads;
    for (const std::string name : {"A", "B", "C", "D"})
        threads.emplace_back([name] {
            for (int round = 0; round < 5; ++round) {
                setApplication(name);
                Tallyfoot::log("a", {});
            }
        });
    for (auto& thread : threads) thread.join();
    Tallyfoot::log("last", {});
    const auto last = records(Tallyfoot::appInfo()->appName());
    ASSERT_THAT(last, Not(IsEmpty()));
    EXPECT_EQ(last.back()["evtType"], "last");
}

TEST_F(TallyfootTest, EveryCallMayComeAtOnce) {
    const std::vector<std::function<void(int)>> calls{
        [this](int round) {
            Tallyfoot::configure(configuration_, {"UISlider"}, [round] {
                Tallyfoot::log("asked", {});
                if (round % 3 == 0) throw std::runtime_error("host");
                if (round % 5 == 0) setApplication("Bank");
                return std::make_shared<Authentication>("user-1", "token-1");
            });
        },
        [](int round) { setApplication(round % 2 == 0 ? "Shop" : "Bank"); },
        [](int) { Tallyfoot::setAppInfo(nullptr); },
        [](int round) { Tallyfoot::setPageParent(std::to_string(round)); },
        [](int round) {
            Tallyfoot::categoryCustomTitles({{"UISlider", std::to_string(round)}});
        },
        [](int) { Tallyfoot::modifyEnvironment([](Environment& environment) { environment.setUploadPath("x"); }); },
        [](int) { Tallyfoot::setEnvironment(std::make_shared<Environment>()); },
        [](int round) { Tallyfoot::setIsEnabled(round % 2 == 0); },
        [](int) { (void)Tallyfoot::shared().ignoreClasses(); },
        [](int) {
            Tallyfoot::log(EventType::action, {{LogAttribute::evtCategory, "UISlider"}}, {{"k", "v"}});
        }};
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < 4; ++thread)
        threads.emplace_back([&calls, thread] {
            for (int round = 0; round < 60; ++round)
                calls[(thread + static_cast<std::size_t>(round)) % calls.size()](round);
        });
    for (auto& thread : threads) thread.join();
    Tallyfoot::setIsEnabled(true);
    start();
    Tallyfoot::log("last", {});
    ASSERT_THAT(records(), Not(IsEmpty()));
    EXPECT_EQ(records().back()["evtType"], "last");
}

TEST_F(TallyfootTest, ErrnoIsLeftAsItWas) {
    errno = EDOM;
    start(); // looks for much that is not there yet
    EXPECT_EQ(errno, EDOM);
    std::filesystem::remove_all(root_ / "data");
    errno = EDOM;
    Tallyfoot::log("a", {}); // makes the folders again
    EXPECT_EQ(errno, EDOM);
    EXPECT_THAT(records(), SizeIs(1));
}

TEST(TallyfootShared, MakingTheSharedInstanceLeavesErrnoAsItWas) {
    errno = EDOM;
    Tallyfoot::appInfo(); // the first call of all
    EXPECT_EQ(errno, EDOM);
}

TEST_F(TallyfootTest, AThreadThatIsCancelledEndsAfterItsCalls) {
    int steps = 0;
    std::thread([&] {
        ::pthread_cancel(::pthread_self()); // heard where the thread may wait next
        Tallyfoot::setShowOutput(true);
        start();
        Tallyfoot::log("a", {});
        Tallyfoot::setShowOutput(false);
        ++steps;
        ::pthread_testcancel();
        ++steps;
    }).join();
    EXPECT_EQ(steps, 1);
    Tallyfoot::log("b", {}); // nothing is held
    EXPECT_THAT(records(), SizeIs(2));
}

TEST_F(TallyfootTest, IllFormedTextIsRecordedWithReplacementCharacters) {
    start();
    Tallyfoot::log(EventType::action, {{LogAttribute::evtLabel, "a\xFF\x62"}});
    EXPECT_EQ(records()[0]["evtLabel"], "a\xEF\xBF\xBD\x62");
}

TEST_F(TallyfootTest, EventsOfOneThreadKeepTheirOrderAmongManyThreads) {
    start();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread)
        threads.emplace_back([thread] {
            for (int event = 0; event < 200; ++event)
                Tallyfoot::log(EventType::action, {{LogAttribute::evtAction, std::to_string(thread)},
                                                   {LogAttribute::evtLabel, std::to_string(event)}});
        });
    for (auto& thread : threads) thread.join();
    std::map<std::string, int> next;
    for (const auto& record : records())
        EXPECT_EQ(record["evtLabel"], std::to_string(next[record["evtAction"].get<std::string>()]++));
    EXPECT_EQ(next.size(), 8U);
    for (const auto& [thread, count] : next) EXPECT_EQ(count, 200) << thread;
}

using TallyfootDeathTest = TallyfootTest;

TEST_F(TallyfootDeathTest, TheTokenBeforeTheRecordingIsFatal) {
    EXPECT_DEATH((void)Tallyfoot::shared().authenticationToken(), "authenticationToken");
    configure();
    EXPECT_DEATH((void)Tallyfoot::shared().authenticationToken(), "authenticationToken");
}

// A host whose last events come from its static objects and exit handlers.
TEST_F(TallyfootDeathTest, EventsAreRecordedUntilTheProcessEnds) {
    EXPECT_EXIT(
        {
            static const struct Early {
                ~Early() { Tallyfoot::log("static object made before", {}); }
            } early;
            start();
            static const struct Late {
                ~Late() { Tallyfoot::log("static object made after", {}); }
            } late;
            std::atexit([] { Tallyfoot::log("exit handler", {}); });
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
    std::vector<std::string> types;
    for (const auto& record : records()) types.push_back(record["evtType"]);
    EXPECT_THAT(types, ElementsAre("exit handler", "static object made after", "static object made before"));
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

TEST_F(TallyfootDeathTest, AnEventTypeThatIsNoCaseIsFatal) {
    start();
    EXPECT_DEATH(Tallyfoot::log(static_cast<EventType>(9), {{LogAttribute::evtLabel, "x"}}), "EventType");
}

} // namespace
} // namespace tallyfoot::testing
