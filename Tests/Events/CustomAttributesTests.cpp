#include "Tallyfoot/Events/CustomAttributes.h"
#include "Tallyfoot/Events/JSON.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>

namespace tallyfoot {
namespace {

// As the logging calls take them, so that the braces are converted as a host's are.
std::optional<std::string> text(const CustomAttributes& customAttributes = std::nullopt) {
    return customAttributes.text();
}

TEST(CustomAttributes, NoneIsNoText) {
    EXPECT_EQ(text(), std::nullopt);
    EXPECT_EQ(text(std::nullopt), std::nullopt);
}

TEST(CustomAttributes, ABracedDictionaryIsCompactText) {
    EXPECT_EQ(text({{"sku", "A-1"}, {"quantity", 2}}), R"({"sku":"A-1","quantity":2})");
    EXPECT_EQ(text({{"sku", "A-1"}}), R"({"sku":"A-1"})");
}

TEST(CustomAttributes, ADictionaryWithoutMembersIsADictionary) {
    EXPECT_EQ(text({}), "{}");
    EXPECT_EQ(text(CustomAttributes()), "{}");
    EXPECT_EQ(text(CustomAttributes{}), "{}");
}

TEST(CustomAttributes, TakesEveryKindOfValue) {
    const std::string string = "s";
    const std::string_view view = "v";
    const CustomAttributes all{{"literal", "l"},
                               {"string", string},
                               {"view", view},
                               {"true", true},
                               {"false", false},
                               {"null", nullptr},
                               {"int", -1},
                               {"short", static_cast<short>(-2)},
                               {"int8", std::int8_t{-3}},
                               {"uint8", std::uint8_t{4}},
                               {"long", 5L},
                               {"size", std::size_t{6}},
                               {"double", 0.5},
                               {"array", CustomArray{"new", 7, CustomArray{}}},
                               {"dictionary", CustomAttributes{{"x", 1}}}};
    EXPECT_EQ(all.text(), R"({"literal":"l","string":"s","view":"v","true":true,"false":false,"null":null,)"
                          R"("int":-1,"short":-2,"int8":-3,"uint8":4,"long":5,"size":6,"double":0.5,)"
                          R"("array":["new",7,[]],"dictionary":{"x":1}})");
}

TEST(CustomAttributes, ACharacterIsNoValue) {
    // It could be meant as a text or as a number.
    EXPECT_FALSE((std::is_constructible_v<CustomValue, char>));
    EXPECT_FALSE((std::is_constructible_v<CustomValue, wchar_t>));
    EXPECT_FALSE((std::is_constructible_v<CustomValue, char32_t>));
    EXPECT_FALSE((std::is_constructible_v<CustomValue, void*>)) << "and no address is a truth value";
    EXPECT_FALSE((std::is_constructible_v<CustomValue, const int*>));
}

TEST(CustomAttributes, AMissingTextIsNull) {
    const char* missing = nullptr;
    EXPECT_EQ(text({{"name", missing}}), R"({"name":null})");
}

TEST(CustomAttributes, WholeNumbersKeepTheirDigits) {
    EXPECT_EQ(text({{"a", std::numeric_limits<std::int64_t>::min()}, {"b", std::numeric_limits<std::uint64_t>::max()}}),
              R"({"a":-9223372036854775808,"b":18446744073709551615})");
}

TEST(CustomAttributes, RealNumbersAreWrittenInTheirShortestForm) {
    EXPECT_EQ(text({{"a", 1.0}, {"b", 0.1}, {"c", 1e21}, {"d", -0.0}, {"e", 1e-7}, {"f", 100000.0}, {"g", 3.14L}}),
              R"({"a":1,"b":0.1,"c":1e+21,"d":-0,"e":1e-07,"f":100000,"g":3.14})");
}

TEST(CustomAttributes, AFloatIsWrittenAsTheDoubleThatItIs) {
    EXPECT_EQ(text({{"a", 0.1F}, {"b", 0.5F}}), R"({"a":0.10000000149011612,"b":0.5})");
}

TEST(CustomAttributes, TextsAndKeysAreEscaped) {
    EXPECT_EQ(text({{"a/\"b", "c\\\n/\x01"}, {"\u00E9", "\U0001F600"}}),
              "{\"a\\/\\\"b\":\"c\\\\\\n\\/\\u0001\",\"\u00E9\":\"\U0001F600\"}");
}

TEST(CustomAttributes, OfAKeyGivenTwiceTheFirstValueCounts) {
    EXPECT_EQ(text({{"a", 1}, {"b", 2}, {"a", 3}}), R"({"a":1,"b":2})");
}

TEST(CustomAttributes, OneValueThatIsNoNumberDropsTheWhole) {
    EXPECT_EQ(text({{"a", 1}, {"b", std::nan("")}}), std::nullopt);
    EXPECT_EQ(text({{"a", HUGE_VAL}}), std::nullopt);
    EXPECT_EQ(text({{"a", -std::numeric_limits<float>::infinity()}}), std::nullopt);
    EXPECT_EQ(text({{"a", CustomArray{1, CustomAttributes{{"deep", HUGE_VAL}}}}}), std::nullopt);
}

TEST(CustomAttributes, OneIllFormedTextDropsTheWhole) {
    EXPECT_EQ(text({{"a", "x\x80"}, {"b", 1}}), std::nullopt);
    EXPECT_EQ(text({{"a", CustomArray{"\xED\xA0\x80"}}}), std::nullopt);
    EXPECT_EQ(text({{"\xFF", 1}}), std::nullopt) << "keys, too";
}

TEST(CustomAttributes, AnArrayOfNoneOrOne) {
    EXPECT_EQ(text({{"a", CustomArray{}}}), R"({"a":[]})");
    EXPECT_EQ(text({{"a", CustomArray{1}}}), R"({"a":[1]})");
    EXPECT_EQ(text({{"a", CustomArray{CustomValue(CustomArray{1})}}}), R"({"a":[[1]]})");
    EXPECT_EQ(text({{"a", CustomArray{CustomArray{1}, CustomArray{}}}}), R"({"a":[[1],[]]})");
}

TEST(CustomAttributes, TakeAJSONObject) {
    const nlohmann::json object = {{"sku", "A/1"}, {"list", {1, 2.5, nullptr}}};
    EXPECT_EQ(text(object), R"({"list":[1,2.5,null],"sku":"A\/1"})");
    EXPECT_EQ(text(nlohmann::json::object()), "{}");
    EXPECT_EQ(text(nlohmann::json({{"a", 1}})), R"({"a":1})");
}

TEST(CustomAttributes, JSONThatIsNoObjectIsNone) {
    EXPECT_EQ(text(nlohmann::json(nullptr)), std::nullopt);
    EXPECT_EQ(text(nlohmann::json::array({1})), std::nullopt);
    EXPECT_EQ(text(nlohmann::json("{}")), std::nullopt);
    EXPECT_EQ(text(nlohmann::json(nlohmann::json::value_t::discarded)), std::nullopt);
}

TEST(CustomAttributes, JSONThatCannotBeSerialisedIsNone) {
    EXPECT_EQ(text(nlohmann::json{{"a", std::nan("")}}), std::nullopt);
    EXPECT_EQ(text(nlohmann::json{{"a", "\x80"}}), std::nullopt);
    EXPECT_EQ(text(nlohmann::json{{"\x80", 1}}), std::nullopt);
    EXPECT_EQ(text(nlohmann::json{{"a", nlohmann::json::binary({1})}}), std::nullopt);
}

TEST(CustomAttributes, JSONMayBeAValueInside) {
    EXPECT_EQ(text({{"a", nlohmann::json::array({1, "x"})}, {"b", nlohmann::json(2)}}), R"({"a":[1,"x"],"b":2})");
    EXPECT_EQ(text({{"a", nlohmann::json(HUGE_VAL)}}), std::nullopt);
}

nlohmann::json nested(int levels) {
    nlohmann::json value = nlohmann::json::array();
    for (int level = 1; level < levels; ++level) {
        auto outer = nlohmann::json::array();
        outer.push_back(std::move(value));
        value = std::move(outer);
    }
    return value;
}

TEST(CustomAttributes, MayBe512LevelsDeepAndNoMore) {
    EXPECT_TRUE(text({{"a", nested(511)}}));
    EXPECT_FALSE(text({{"a", nested(512)}}));
    EXPECT_TRUE(text({{"a", CustomArray{nested(510)}}}));
    EXPECT_FALSE(text({{"a", CustomArray{nested(511)}}}));
    EXPECT_TRUE(text(nlohmann::json{{"a", nested(511)}}));
    EXPECT_FALSE(text(nlohmann::json{{"a", nested(512)}}));
}

TEST(CustomAttributes, AVeryDeepValueIsRefusedWithoutHarm) { EXPECT_FALSE(text({{"a", nested(200'000)}})); }

TEST(CustomAttributes, TheirTextReadsBack) {
    const auto whole =
        text({{"a", CustomArray{1, -2, 0.25, "x/y", nullptr, true}}, {"b", CustomAttributes{{"c", "\u00E9"}}}});
    EXPECT_EQ(json::parse(*whole), nlohmann::json::parse(R"({"a":[1,-2,0.25,"x/y",null,true],"b":{"c":"é"}})"));
}

} // namespace
} // namespace tallyfoot
