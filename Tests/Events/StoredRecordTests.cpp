#include "Tallyfoot/Events/FileEventFormatter.h"
#include "Tallyfoot/Events/JSON.h"
#include "Tallyfoot/Events/StoredRecord.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <random>

namespace tallyfoot {
namespace {

std::string stored(std::string line, const Attributes& properties = {{LogAttribute::custom, "any"}}) {
    makeStoredRecord(line, properties);
    return line;
}

std::string storedEvent(const Attributes& properties) {
    return stored(FileEventFormatter().format(Event{EventType::action, properties}).value(), properties);
}

TEST(StoredRecord, TheSeparatorIsNineCharacters) { EXPECT_EQ(recordSeparator, "jsonsplit"); }

TEST(StoredRecord, WithoutCustomDataTheLayoutStays) {
    EXPECT_EQ(storedEvent(
                  {{LogAttribute::evtId, "1"}, {LogAttribute::evtType, "screen"}, {LogAttribute::screenTitle, "Home"}}),
              "{\n  \"evtId\" : \"1\",\n  \"evtType\" : \"screen\",\n  \"pgName\" : \"Home\"\n}jsonsplit");
}

TEST(StoredRecord, AnObjectInAnArrayBecomesRealJSON) {
    EXPECT_EQ(storedEvent({{LogAttribute::custom, R"([{"a":"b"}])"}, {LogAttribute::evtType, "screen"}}),
              R"({"custom":[{"a":"b"}],"evtType":"screen"}jsonsplit)");
}

TEST(StoredRecord, AnEmptyArrayIsUsableCustomData) {
    EXPECT_EQ(storedEvent({{LogAttribute::custom, "[]"}, {LogAttribute::evtId, "1"}}),
              R"({"custom":[],"evtId":"1"}jsonsplit)");
}

TEST(StoredRecord, AnArrayOfOtherThingsStaysAText) {
    EXPECT_EQ(storedEvent({{LogAttribute::custom, "[1,2]"}}), "{\n  \"custom\" : \"[1,2]\"\n}jsonsplit");
    EXPECT_EQ(storedEvent({{LogAttribute::custom, "[{},1]"}}), "{\n  \"custom\" : \"[{},1]\"\n}jsonsplit");
    EXPECT_EQ(storedEvent({{LogAttribute::custom, "[[]]"}}), "{\n  \"custom\" : \"[[]]\"\n}jsonsplit");
    EXPECT_EQ(storedEvent({{LogAttribute::custom, "{}"}}), "{\n  \"custom\" : \"{}\"\n}jsonsplit");
}

TEST(StoredRecord, WhatIsNoJSONStaysAText) {
    EXPECT_EQ(storedEvent({{LogAttribute::custom, "[abc]"}}), "{\n  \"custom\" : \"[abc]\"\n}jsonsplit");
    EXPECT_EQ(storedEvent({{LogAttribute::custom, ""}}), "{\n  \"custom\" : \"\"\n}jsonsplit");
}

TEST(StoredRecord, TheOtherMembersAreEscapedAsBefore) {
    EXPECT_EQ(storedEvent({{LogAttribute::custom, "[{}]"}, {LogAttribute::evtLabel, "a/b\n\"\x01\u00E9"}}),
              "{\"custom\":[{}],\"evtLabel\":\"a\\/b\\n\\\"\\u0001\u00E9\"}jsonsplit");
}

TEST(StoredRecord, AValueThatReadsCustomIsNoCustomData) {
    EXPECT_EQ(storedEvent({{LogAttribute::evtLabel, "custom"}}), "{\n  \"evtLabel\" : \"custom\"\n}jsonsplit");
    EXPECT_EQ(storedEvent({{LogAttribute::evtLabel, R"("custom":"[{}]")"}}),
              "{\n  \"evtLabel\" : \"\\\"custom\\\":\\\"[{}]\\\"\"\n}jsonsplit");
}

TEST(StoredRecord, WithoutTheAttributeThereIsNothingToTurn) {
    const std::string_view pieces[] = {"custom", "\"", ":",  "[{}]", "\\",     "/", "{",
                                       "}",      ",",  "\n", "\x80", "\u00E9", "x"};
    std::mt19937 random(13);
    for (int round = 0; round < 5000; ++round) {
        Attributes properties;
        for (std::size_t place = 0; place < logAttributeTexts.size(); ++place) {
            std::string value;
            for (auto left = random() % 6; left > 0; --left) value += pieces[random() % std::size(pieces)];
            properties.set(static_cast<LogAttribute>(place), std::move(value));
        }
        properties.remove(LogAttribute::custom);
        std::string text;
        ASSERT_TRUE(FileEventFormatter().format(properties, text));
        ASSERT_EQ(json::deEscapedCustomData(text), text);
        ASSERT_EQ(stored(text, properties), text + "jsonsplit");
    }
}

TEST(StoredRecord, AnEscapedNameIsTheName) {
    EXPECT_EQ(stored(R"({ "\u0063ustom" : "[{}]" })"), R"({"custom":[{}]}jsonsplit)");
}

TEST(StoredRecord, WhatIsNoJSONObjectIsOnlyEnded) {
    for (const std::string text :
         {"", "custom", "\"custom\"", "[\"custom\"]", "{\"custom\":\"[{}]\"", "{\"custom\":\"[{}]\"} x", "{}", "{\n\n}",
          "{\"custom\" \"[{}]\"}", "[{\"custom\":\"[{}]\"}]", "{\"custom\":\"[{}]\",}"})
        EXPECT_EQ(stored(text), text + "jsonsplit");
}

TEST(StoredRecord, OnlyATextUnderCustomIsTurned) {
    for (const std::string text :
         {R"({ "custom" : [{}] })", R"({ "custom" : 1 })", R"({ "custom" : null })", R"({ "custom" : ["[{}]"] })",
          R"({ "custom" : {"custom" : "[{}]"} })", R"({ "a" : {"custom" : "[{}]"} })"})
        EXPECT_EQ(stored(text), text + "jsonsplit");
}

TEST(StoredRecord, OfTwoCustomMembersTheFirstCounts) {
    EXPECT_EQ(stored(R"({"custom":"[{\"a\":1}]","custom":"[{\"a\":2}]"})"), R"({"custom":[{"a":1}]}jsonsplit)");
    EXPECT_EQ(stored(R"({"custom":"x", "custom":"[{}]"})"), R"({"custom":"x", "custom":"[{}]"}jsonsplit)");
    EXPECT_EQ(stored(R"({"custom":"[{\"a\":1,\"a\":[2,{\"a\":3}],\"b\":4}]"})"),
              R"({"custom":[{"a":1,"b":4}]}jsonsplit)");
}

TEST(StoredRecord, NumbersInCustomDataKeepTheirValue) {
    EXPECT_EQ(
        stored(
            R"({"custom":"[{\"a\":18446744073709551615,\"b\":-9223372036854775808,\"c\":1.50,\"d\":1e2,\"e\":-0,\"f\":18446744073709551616}]"})"),
        R"({"custom":[{"a":18446744073709551615,"b":-9223372036854775808,"c":1.5,"d":100,"e":-0,"f":1.8446744073709552e+19}]}jsonsplit)");
}

TEST(StoredRecord, ANumberThatNoDoubleHoldsLeavesTheText) {
    const std::string text = R"({ "custom" : "[{\"a\":1e400}]" })";
    EXPECT_EQ(stored(text), text + "jsonsplit");
}

TEST(StoredRecord, CustomDataMayBe511LevelsDeepBecauseTheRecordIsOneMore) {
    const auto event = [](std::size_t levels) {
        return "{\"custom\":\"[{\\\"a\\\":" + std::string(levels - 2, '[') + std::string(levels - 2, ']') + "}]\"}";
    };
    EXPECT_EQ(json::deEscapedCustomData(event(511)).find('\\'), std::string::npos);
    EXPECT_EQ(json::deEscapedCustomData(event(512)), event(512));
}

TEST(StoredRecord, AnObjectWithManyKeysStaysQuick) {
    // Telling keys apart one by one would take minutes here.
    std::string custom = "[{";
    for (int key = 0; key < 200'000; ++key) custom += "\"k" + std::to_string(key) + "\":1,";
    custom += "\"k199999\":2,\"k5\":2}]";
    const std::string record = storedEvent({{LogAttribute::custom, custom}});
    EXPECT_TRUE(record.ends_with("\"k199999\":1}]}jsonsplit")) << record.substr(record.size() - 60);
}

// The same by way of a tree, as slow as it may be.
std::string deEscapedByTree(const std::string& text) {
    auto object = json::dictionary(text);
    if (!object || !object->contains("custom") || !(*object)["custom"].is_string()) return text;
    auto array = json::array((*object)["custom"].get_ref<const std::string&>());
    if (!array) return text;
    (*object)["custom"] = std::move(*array);
    return json::write(*object).value_or(text);
}

TEST(StoredRecord, AgreesWithTheWayOverATree) {
    for (const std::string custom :
         {"[]", "[{}]", R"([{"b":1,"a":[1,2,{"x":"y\/z\u00e9\ud83d\ude00"}]},{}])", "[1]", "abc", "[{]",
          R"([{"a":1.0,"b":1e5,"c":0.00001,"d":true,"e":null,"f":false}])", "\xEF\xBB\xBF[{}]", " [ { } ] "}) {
        const std::string text =
            FileEventFormatter()
                .format(
                    Event{EventType::action, {{LogAttribute::custom, custom}, {LogAttribute::evtLabel, "x/\u00E9"}}})
                .value();
        const auto direct = json::deEscapedCustomData(text);
        const auto byTree = deEscapedByTree(text);
        EXPECT_EQ(direct == text, byTree == text) << custom;
        EXPECT_EQ(json::parse(direct), json::parse(byTree)) << custom;
        EXPECT_EQ(direct.size(), byTree.size()) << custom;
    }
}

} // namespace
} // namespace tallyfoot
