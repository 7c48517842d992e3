#include "Tallyfoot/Events/Attributes.h"
#include "Tallyfoot/Events/CustomAttributes.h"
#include "Tallyfoot/Events/EventType.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tallyfoot {
namespace {

// What a logging call was given, by way of parameters like those of the calls themselves, so that
// braces, literals and leaving out are resolved as they are for a host.
struct Call {
    std::string type;
    Attributes attributes;
    std::optional<std::string> custom;
};

Call log(EventType type, Attributes attributes, const CustomAttributes& custom = std::nullopt) {
    return {"EventType " + std::string(rawValue(type)), std::move(attributes), custom.text()};
}

Call log(std::string_view type, Attributes attributes, const CustomAttributes& custom = std::nullopt) {
    return {"text " + std::string(type), std::move(attributes), custom.text()};
}

Call logEvent(EventType type, const TextAttributes& attributes, const CustomAttributes& custom = std::nullopt) {
    return log(type, Attributes::fromTexts(attributes), custom);
}

Call logEvent(std::string_view type, const TextAttributes& attributes, const CustomAttributes& custom = std::nullopt) {
    return log(type, Attributes::fromTexts(attributes), custom);
}

const Attributes buy{{LogAttribute::evtLabel, "Buy"}};
const Attributes basket{{LogAttribute::screenTitle, "Basket"}};

void expect(const Call& call, std::string_view type, const Attributes& attributes,
            const std::optional<std::string>& custom) {
    EXPECT_EQ(call.type, type);
    EXPECT_EQ(call.attributes, attributes);
    EXPECT_EQ(call.custom, custom);
}

TEST(CallShapes, AttributesInBraces) {
    expect(log(EventType::action, {{LogAttribute::evtLabel, "Buy"}}), "EventType action", buy, std::nullopt);
    expect(log("purchase", {}), "text purchase", {}, std::nullopt);
    expect(log(std::string("purchase"), {}), "text purchase", {}, std::nullopt);
    const std::string label = "Buy";
    expect(log(EventType::action, {{LogAttribute::evtLabel, label}}), "EventType action", buy, std::nullopt);
}

TEST(CallShapes, CustomDataInBraces) {
    expect(log(EventType::action, {{LogAttribute::evtLabel, "Buy"}}, {{"sku", "A-1"}, {"quantity", 2}}),
           "EventType action", buy, R"({"sku":"A-1","quantity":2})");
    expect(log("purchase", {}, {{"sku", "A-1"}}), "text purchase", {}, R"({"sku":"A-1"})");
    expect(log("purchase", {}, {{"a", "b"}, {"c", "d"}}), "text purchase", {}, R"({"a":"b","c":"d"})");
    expect(log("purchase", {}, {}), "text purchase", {}, "{}");
    expect(log("purchase", {}, std::nullopt), "text purchase", {}, std::nullopt);
}

TEST(CallShapes, AttributesByRecordKey) {
    expect(logEvent("purchase", {{"pgName", "Basket"}}, {{"sku", "A-1"}}), "text purchase", basket, R"({"sku":"A-1"})");
    expect(logEvent(EventType::screen, {{"pgName", "Basket"}}), "EventType screen", basket, std::nullopt);
    expect(logEvent("purchase", {{"pgName", "Basket"}, {"foo", "x"}}), "text purchase", basket, std::nullopt);
    expect(logEvent("purchase", {}), "text purchase", {}, std::nullopt);
}

TEST(CallShapes, CustomDataAsAJSONObject) {
    const nlohmann::json object = {{"sku", "A-1"}};
    expect(log(EventType::action, {}, object), "EventType action", {}, R"({"sku":"A-1"})");
    expect(log("purchase", {}, nlohmann::json{{"sku", "A-1"}}), "text purchase", {}, R"({"sku":"A-1"})");
    expect(logEvent("purchase", {}, nlohmann::json::object()), "text purchase", {}, "{}");
}

TEST(CallShapes, AWholeNumberOfMoreThan64BitsIsNoValue) {
    // Compilers that know such numbers count them as integral.
    __extension__ using Wide = __int128;
    __extension__ using WideUnsigned = unsigned __int128;
    EXPECT_TRUE((std::signed_integral<Wide> && std::unsigned_integral<WideUnsigned>));
    EXPECT_FALSE((std::is_constructible_v<CustomValue, Wide>));
    EXPECT_FALSE((std::is_constructible_v<CustomValue, WideUnsigned>));
}

} // namespace
} // namespace tallyfoot
