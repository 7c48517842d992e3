#include "Tallyfoot/Upload/UploadResult.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace tallyfoot {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

nlohmann::json good() {
    return {{"statusCode", "200"},
            {"statusCodeInfo", "OK"},
            {"filename", "a.zip"},
            {"success", {"1.log"}},
            {"failure", nlohmann::json::array()}};
}

nlohmann::json goodBut(const char* key, nlohmann::json value) {
    auto response = good();
    response[key] = std::move(value);
    return response;
}

nlohmann::json goodWithout(const char* key) {
    auto response = good();
    response.erase(key);
    return response;
}

std::string statusCodeOf(nlohmann::json value) {
    const auto result = decodeUploadResult(goodBut("statusCode", std::move(value)));
    return result ? result.value().statusCode : "error: " + result.error().description;
}

std::string errorOf(const nlohmann::json& response) {
    const auto result = decodeUploadResult(response);
    return result ? "decoded" : result.error().description;
}

} // namespace

TEST(UploadResult, TakesTheFiveMembers) {
    const auto result = decodeUploadResult({{"statusCode", "200"},
                                            {"statusCodeInfo", "Fine"},
                                            {"filename", "a.zip"},
                                            {"success", {"1.log", "2.log"}},
                                            {"failure", {"3.log"}}});
    ASSERT_TRUE(result);
    EXPECT_EQ(result.value().statusCode, "200");
    EXPECT_EQ(result.value().statusCodeInfo, "Fine");
    EXPECT_EQ(result.value().filename, "a.zip");
    EXPECT_THAT(result.value().success, Optional(ElementsAre("1.log", "2.log")));
    EXPECT_THAT(result.value().failure, Optional(ElementsAre("3.log")));
}

TEST(UploadResult, PassesOverOtherMembers) { EXPECT_TRUE(decodeUploadResult(goodBut("version", {{"statusCode", 1}}))); }

TEST(UploadResult, StatusCodesMayBeNumbersOrTexts) {
    EXPECT_EQ(statusCodeOf("10000002"), "10000002");
    EXPECT_EQ(statusCodeOf(10000002), "10000002");
    EXPECT_EQ(statusCodeOf(-1), "-1");
    EXPECT_EQ(statusCodeOf(0U), "0");
    EXPECT_EQ(statusCodeOf(18446744073709551615ULL), "18446744073709551615");
    EXPECT_EQ(statusCodeOf(""), "");
    EXPECT_EQ(statusCodeOf(" 200 "), " 200 ");
}

TEST(UploadResult, AWholeStatusCodeReadsTheSameHoweverItWasSent) {
    EXPECT_EQ(statusCodeOf(200.0), "200");
    EXPECT_EQ(statusCodeOf(1e7), "10000000");
    EXPECT_EQ(statusCodeOf(10000003.0), "10000003");
    EXPECT_EQ(statusCodeOf(-0.0), "0");
    EXPECT_EQ(statusCodeOf(200.5), "200.5");
    EXPECT_EQ(statusCodeOf(1e300), "1e+300");
}

TEST(UploadResult, AStatusCodeIsRequired) {
    EXPECT_EQ(errorOf(goodWithout("statusCode")), "The response's \"statusCode\" is missing");
    EXPECT_EQ(errorOf(goodBut("statusCode", nullptr)), "The response's \"statusCode\" is missing");
    EXPECT_EQ(errorOf(goodBut("statusCode", true)), "The response's \"statusCode\" is neither a number nor a text");
    EXPECT_EQ(errorOf(goodBut("statusCode", {200})), "The response's \"statusCode\" is neither a number nor a text");
    EXPECT_EQ(errorOf(nlohmann::json::object()), "The response's \"statusCode\" is missing");
}

TEST(UploadResult, WithoutItsTextsTheyAreEmpty) {
    for (const auto* key : {"statusCodeInfo", "filename"})
        for (const auto& response : {goodWithout(key), goodBut(key, nullptr)}) {
            const auto result = decodeUploadResult(response);
            ASSERT_TRUE(result) << key;
            EXPECT_EQ(std::string_view(key) == "filename" ? result.value().filename : result.value().statusCodeInfo,
                      "");
        }
}

TEST(UploadResult, TextsOfAnotherKindDoNotDecode) {
    EXPECT_EQ(errorOf(goodBut("statusCodeInfo", 5)), "The response's \"statusCodeInfo\" is not a text");
    EXPECT_EQ(errorOf(goodBut("filename", {"a.zip"})), "The response's \"filename\" is not a text");
}

TEST(UploadResult, ListsMayBeAbsentOrNull) {
    for (const auto* key : {"success", "failure"})
        for (const auto& response : {goodWithout(key), goodBut(key, nullptr)}) {
            const auto result = decodeUploadResult(response);
            ASSERT_TRUE(result) << key;
            EXPECT_EQ(std::string_view(key) == "success" ? result.value().success : result.value().failure,
                      std::nullopt);
        }
}

TEST(UploadResult, AnEmptyListIsThereAndEmpty) {
    EXPECT_THAT(decodeUploadResult(goodBut("failure", nlohmann::json::array())).value().failure, Optional(IsEmpty()));
}

TEST(UploadResult, AnythingButAnArrayOfTextsDoesNotDecode) {
    for (const auto* key : {"success", "failure"})
        for (const nlohmann::json& value :
             {nlohmann::json("1.log"), nlohmann::json(1), nlohmann::json(false), nlohmann::json{{"a", "b"}},
              nlohmann::json{"1.log", 2}, nlohmann::json{"1.log", nullptr},
              nlohmann::json::array({nlohmann::json::array({"1.log"})})})
            EXPECT_EQ(errorOf(goodBut(key, value)),
                      "The response's \"" + std::string(key) + "\" is not an array of texts")
                << value;
}

TEST(UploadResult, TheFirstFaultIsNamed) {
    EXPECT_EQ(errorOf({{"statusCode", false}, {"failure", 1}}),
              "The response's \"statusCode\" is neither a number nor a text");
}

TEST(UploadResult, OnlyAnObjectDecodes) {
    EXPECT_EQ(errorOf(nlohmann::json::array()), "The response is not an object");
}

} // namespace tallyfoot
