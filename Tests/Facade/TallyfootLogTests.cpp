#include "Facade/TallyfootTest.h"

#include "Tallyfoot/Facade/TallyfootImplementation.h"

#include <gmock/gmock.h>

#include <cmath>
#include <optional>
#include <regex>
#include <string>
#include <vector>

// What a logged event is recorded as.
namespace tallyfoot::testing {
namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

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

TEST_F(TallyfootTest, IllFormedTextIsRecordedWithReplacementCharacters) {
    start();
    Tallyfoot::log(EventType::action, {{LogAttribute::evtLabel, "a\xFF\x62"}});
    EXPECT_EQ(records()[0]["evtLabel"], "a\xEF\xBF\xBD\x62");
}

TEST_F(TallyfootDeathTest, AnEventTypeThatIsNoCaseIsFatal) {
    start();
    EXPECT_DEATH(Tallyfoot::log(static_cast<EventType>(9), {{LogAttribute::evtLabel, "x"}}), "EventType");
}

} // namespace
} // namespace tallyfoot::testing
