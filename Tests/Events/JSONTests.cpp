#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Events/JSON.h"
#include "Tallyfoot/Events/JSONText.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <random>

namespace tallyfoot {
namespace {

std::string brackets(std::size_t levels) { return std::string(levels, '[') + std::string(levels, ']'); }

// What the text reads as, written again.
std::string again(std::string_view text) {
    const auto value = json::parse(text);
    return value ? json::write(*value).value_or("cannot be written") : "no JSON";
}

TEST(JSONReader, ReadsObjectsAndArrays) {
    EXPECT_EQ(again("{}"), "{}");
    EXPECT_EQ(again("[]"), "[]");
    EXPECT_EQ(again(" \t\r\n{ \"a\" : [ 1 , \"x\" , null , true , false , { } ] , \"b\" : { \"c\" : [ ] } } \n"),
              R"({"a":[1,"x",null,true,false,{}],"b":{"c":[]}})");
}

TEST(JSONReader, RefusesFragments) {
    for (const auto* text : {"1", "\"a\"", "null", "true", "", " ", "-"}) EXPECT_FALSE(json::parse(text)) << text;
}

TEST(JSONReader, RefusesWhatIsNotQuiteJSON) {
    for (const auto* text : {"[1,]",
                             "[,1]",
                             "[1 2]",
                             "[",
                             "]",
                             "[]]",
                             "[}",
                             "{]",
                             "{",
                             "{\"a\"}",
                             "{\"a\":}",
                             "{\"a\":1,}",
                             "{a:1}",
                             "{'a':1}",
                             "{1:1}",
                             "{\"a\" 1}",
                             "{\"a\"::1}",
                             "{,}",
                             "[nul]",
                             "[nulll]",
                             "[True]",
                             "[NaN]",
                             "[Infinity]",
                             "[undefined]",
                             "[//c\n1]",
                             "[/**/1]",
                             "[\"a]",
                             "[\"a\\\"]",
                             "[\"a\n\"]",
                             "[\"\\x\"]",
                             "[\"\\u12g4\"]",
                             "[\"\\u123\"]",
                             "[\"\\u+123\"]",
                             "[\"\\u-123\"]",
                             "[\"\\",
                             "[\"\\u",
                             "[\"\\u1",
                             "[\xC2\xA0]",
                             "[\f1]",
                             "[0x10]"})
        EXPECT_FALSE(json::parse(text)) << text;
}

TEST(JSONReader, RefusesWhatFollowsTheValue) {
    EXPECT_FALSE(json::parse("{} x"));
    EXPECT_FALSE(json::parse("[][]"));
    EXPECT_FALSE(json::parse("{},"));
    EXPECT_FALSE(json::parse(std::string_view("{}\0", 3))) << "a zero byte ends nothing";
    EXPECT_FALSE(json::parse(std::string_view("{}\0x", 4)));
    EXPECT_FALSE(json::parse(std::string_view("[\0]", 3)));
}

TEST(JSONReader, RefusesNumbersOutOfShape) {
    for (const auto* number : {"01", "-01", "00", "+1", ".5", "1.", "1.e1", "1e", "1e+", "1e-", "-", "--1", "1.5.5",
                               "1e1e1", "0x1", "1_000"})
        EXPECT_FALSE(json::parse("[" + std::string(number) + "]")) << number;
}

TEST(JSONReader, WholeNumbersOf64BitsAreExact) {
    EXPECT_EQ(again("[0,-1,9007199254740993,-9223372036854775808,18446744073709551615]"),
              "[0,-1,9007199254740993,-9223372036854775808,18446744073709551615]");
}

TEST(JSONReader, LongerWholeNumbersBecomeReal) {
    EXPECT_EQ(again("[18446744073709551616,-9223372036854775809]"), "[1.8446744073709552e+19,-9.223372036854776e+18]");
}

TEST(JSONReader, MinusZeroKeepsItsSign) { EXPECT_EQ(again("[-0,-0.0,0,0.0,-0e5]"), "[-0,-0,0,0,-0]"); }

TEST(JSONReader, RealNumbersAreTheNearestDouble) {
    EXPECT_EQ(again("[0.1,1.0,1e2,1E-2,1e+2,123456.789e3,2.2250738585072014e-308,5e-324,1.7976931348623157e308]"),
              "[0.1,1,100,0.01,100,123456789,2.2250738585072014e-308,5e-324,1.7976931348623157e+308]");
}

TEST(JSONReader, ANumberBeyondTheLargestDoubleIsRefused) {
    for (const std::string number : {"1e400", "-1e400", "1.8e308", "1e99999999999999999999", "0.001e999", "123456e305"})
        EXPECT_FALSE(json::parse("[" + number + "]")) << number;
    EXPECT_FALSE(json::parse("[1" + std::string(400, '0') + "]"));
    EXPECT_FALSE(json::parse("[1" + std::string(400, '0') + ".5]"));
}

TEST(JSONReader, ANumberTooSmallForADoubleIsZero) {
    EXPECT_EQ(again("[1e-400,-1e-400,1e-99999999999999999999,123e-999]"), "[0,-0,0,0]");
    EXPECT_EQ(again("[0." + std::string(400, '0') + "1]"), "[0]");
    EXPECT_EQ(again("[0e99999999999999999999,0.0e400]"), "[0,0]");
}

TEST(JSONReader, LongDigitsAndExponentsThatCancelAreRead) {
    EXPECT_EQ(again("[0." + std::string(400, '0') + "1e401]"), "[1]");
    EXPECT_EQ(again("[1" + std::string(400, '0') + "e-400]"), "[1]");
}

TEST(JSONReader, ReadsEveryEscape) {
    const auto value = json::parse(R"(["\"\\\/\b\f\n\r\t\u0041\u00e9\u00E9\u4e2d\ud83d\ude00\u0000"])");
    ASSERT_TRUE(value);
    EXPECT_EQ((*value)[0].get<std::string>(), "\"\\/\b\f\n\r\tA\u00E9\u00E9\u4E2D\U0001F600" + std::string(1, '\0'));
}

TEST(JSONReader, RefusesLoneSurrogates) {
    for (const auto* text : {R"(["\ud83d"])", R"(["\ude00"])", R"(["\ud83dx"])", R"(["\ud83d\n"])",
                             R"(["\ud83d\u0041"])", R"(["\ud83d\ud83d"])", R"({"\ude00":1})"})
        EXPECT_FALSE(json::parse(text)) << text;
}

TEST(JSONReader, RefusesIllFormedUTF8) {
    for (const auto* text : {"[\"\x80\"]", "[\"\xC0\xAF\"]", "[\"\xE2\x82\"]", "[\"\xED\xA0\x80\"]",
                             "[\"\xF4\x90\x80\x80\"]", "[\"\xFF\"]", "{\"\x80\":1}", "[\"\\n\x80\"]"})
        EXPECT_FALSE(json::parse(text)) << text;
}

TEST(JSONReader, RefusesBareControlCharactersInTexts) {
    for (char byte = 0; byte < 0x20; ++byte)
        EXPECT_FALSE(json::parse("[\"" + std::string(1, byte) + "\"]")) << int{byte};
    EXPECT_TRUE(json::parse("[\"\x7F\"]"));
}

TEST(JSONReader, SkipsOneByteOrderMark) {
    EXPECT_EQ(again("\xEF\xBB\xBF{}"), "{}");
    EXPECT_FALSE(json::parse("\xEF\xBB\xBF\xEF\xBB\xBF{}"));
    EXPECT_FALSE(json::parse("\xEF\xBB{}"));
    EXPECT_FALSE(json::parse(" \xEF\xBB\xBF{}"));
    EXPECT_FALSE(json::parse("\xEF\xBB\xBF"));
}

TEST(JSONReader, Reads512LevelsAndNoMore) {
    EXPECT_TRUE(json::parse(brackets(512)));
    EXPECT_FALSE(json::parse(brackets(513)));
    EXPECT_FALSE(json::parse(brackets(1'000'000)));
    EXPECT_FALSE(json::parse(std::string(1'000'000, '[')));
    std::string objects;
    for (int level = 0; level < 511; ++level) objects += "{\"a\":";
    EXPECT_TRUE(json::parse(objects + "{}" + std::string(511, '}')));
    EXPECT_FALSE(json::parse(objects + "[[]]" + std::string(511, '}')));
}

TEST(JSONReader, OfDuplicateKeysTheFirstWins) {
    EXPECT_EQ(again(R"({"a":1,"a":2,"b":3,"a":[{"a":4},"x"],"a":{},"c":5})"), R"({"a":1,"b":3,"c":5})");
    EXPECT_EQ(again(R"({"a":{"x":1},"a":{"y":2}})"), R"({"a":{"x":1}})");
    EXPECT_EQ(again(R"({"a":null,"\u0061":2})"), R"({"a":null})");
    EXPECT_EQ(again(R"([{"a":1},{"a":2}])"), R"([{"a":1},{"a":2}])");
}

TEST(JSONReader, WhatIsPassedOverMustStillBeJSON) {
    EXPECT_FALSE(json::parse(R"({"a":1,"a":[})"));
    EXPECT_FALSE(json::parse(R"({"a":1,"a":1e400})"));
    EXPECT_FALSE(json::parse("{\"a\":1,\"a\":" + brackets(512) + "}"));
}

TEST(JSONReader, IsIndifferentToTheLocale) {
    // A host may have chosen one whose decimal point is another character, here one of two bytes.
    const testing::TemporaryFolder folder;
    const std::string name = "ps_AF.UTF-8";
    const std::string command = "localedef -i ps_AF -f UTF-8 " + (folder / name) + " >/dev/null 2>&1";
    ::setenv("LOCPATH", folder.path().c_str(), 1);
    if (std::system(command.c_str()) != 0 || std::setlocale(LC_ALL, name.c_str()) == nullptr) // NOLINT
        GTEST_SKIP() << "the locale " << name << " cannot be made";
    ASSERT_STRNE(std::localeconv()->decimal_point, ".");
    EXPECT_EQ(again("[1.5,1234567.25]"), "[1.5,1234567.25]");
    std::setlocale(LC_ALL, "C");
}

TEST(JSONReader, ADictionaryIsAnObject) {
    EXPECT_TRUE(json::dictionary("{}"));
    EXPECT_FALSE(json::dictionary("[]"));
    EXPECT_FALSE(json::dictionary("[{}]"));
    EXPECT_FALSE(json::dictionary("x"));
}

TEST(JSONReader, AnArrayHoldsObjectsOnly) {
    EXPECT_TRUE(json::array("[]"));
    EXPECT_TRUE(json::array("[{},{\"a\":[1]}]"));
    EXPECT_FALSE(json::array("[1,2]"));
    EXPECT_FALSE(json::array("[{},1]"));
    EXPECT_FALSE(json::array("[[]]"));
    EXPECT_FALSE(json::array("{}"));
    EXPECT_FALSE(json::array("abc"));
}

TEST(JSONWriter, WritesEveryKindOfValueCompactly) {
    EXPECT_EQ(json::write(nlohmann::json::parse(R"({"a":[1,-2,0.5,"x",null,true,false,{},[]]})")),
              R"({"a":[1,-2,0.5,"x",null,true,false,{},[]]})");
    EXPECT_EQ(json::write("x"), "\"x\"");
    EXPECT_EQ(json::write(nullptr), "null");
}

TEST(JSONWriter, Escapes) {
    EXPECT_EQ(json::write(nlohmann::json(std::string("\"\\/\b\f\n\r\t\x01\x1F\x7F\u2028\u00E9\0", 17))),
              "\"\\\"\\\\\\/\\b\\f\\n\\r\\t\\u0001\\u001f\x7F\u2028\u00E9\\u0000\"");
}

TEST(JSONWriter, WritesRealNumbersInTheirShortestForm) {
    const std::pair<double, const char*> cases[] = {
        {1, "1"},
        {-1, "-1"},
        {0.1, "0.1"},
        {1e21, "1e+21"},
        {-0.0, "-0"},
        {0.0, "0"},
        {1e5, "100000"},
        {1e15, "1000000000000000"},
        {1e16, "10000000000000000"},
        {1e17, "1e+17"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {1.0 / 3, "0.3333333333333333"},
        {5e-324, "5e-324"},
        {1.7976931348623157e308, "1.7976931348623157e+308"},
        {9007199254740993.0, "9007199254740992"},
        {123.456, "123.456"},
    };
    for (const auto& [number, text] : cases) EXPECT_EQ(json::write(number), text);
}

TEST(JSONWriter, EveryDoubleReadsBackTheSame) {
    std::mt19937_64 random(5);
    for (int round = 0; round < 50'000; ++round) {
        const auto number = std::bit_cast<double>(random());
        if (!std::isfinite(number)) continue;
        const auto text = json::write(nlohmann::json::array({number}));
        const auto value = json::parse(*text);
        ASSERT_TRUE(value) << *text;
        ASSERT_EQ((*value)[0].get<double>(), number) << *text;
    }
}

TEST(JSONWriter, RefusesWhatIsNoJSON) {
    EXPECT_FALSE(json::write(std::nan("")));
    EXPECT_FALSE(json::write(nlohmann::json::array({HUGE_VAL})));
    EXPECT_FALSE(json::write("\x80"));
    EXPECT_FALSE(json::write({{"\x80", 1}}));
    EXPECT_FALSE(json::write(nlohmann::json::binary({1})));
}

TEST(JSONWriter, Writes512LevelsAndNoMore) {
    const auto deepest = nlohmann::json::parse(brackets(512));
    EXPECT_EQ(json::write(deepest), brackets(512));
    EXPECT_FALSE(json::write(nlohmann::json::array({deepest})));
    EXPECT_FALSE(json::write(nlohmann::json::parse(brackets(200'000))));
}

TEST(JSONWriter, SaysHowDeepAValueIs) {
    const std::pair<const char*, int> cases[] = {{"1", 0}, {"[]", 1}, {"[[],{}]", 2}, {"{\"a\":[{}],\"b\":1}", 3}};
    for (const auto& [text, levels] : cases) {
        int said = -1;
        EXPECT_EQ(json::write(nlohmann::json::parse(text), said), text);
        EXPECT_EQ(said, levels) << text;
    }
}

TEST(JSONText, QuotesATextAndSaysWhetherItWasWellFormed) {
    std::string text = "x:";
    EXPECT_TRUE(json::appendQuoted(text, "a/\""));
    EXPECT_FALSE(json::appendQuoted(text, "\x80"));
    EXPECT_EQ(text, "x:\"a\\/\\\"\"\"\uFFFD\"");
}

// Texts that are JSON or nearly so: pieces of it in a random order, now and then a random byte.
std::string nearlyJSON(std::mt19937& random) {
    static constexpr std::string_view pieces[] = {
        "{",           "}",          "[",     "]",    ",",       ":",  "\"a\"", "\"b\"",       "\"\"",
        "1",           "-0",         "1.5e3", "null", "true",    " ",  "\n",    "\"\\u0041\"", "\"\\ud83d\\ude00\"",
        "\"\\ud83d\"", "\"\u00E9\"", "01",    "-",    "{\"c\":", "[[", "]]",    "{}",          "[]"};
    std::string text = random() % 2 == 0 ? "[" : "{\"x\":[";
    const std::string_view end = text == "[" ? "]" : "]}";
    bool wantsComma = false;
    for (auto left = random() % 12; left > 0; --left) {
        if (wantsComma && random() % 10 != 0) text += ',';
        if (random() % 40 == 0)
            text += static_cast<char>(random());
        else
            text += pieces[random() % std::size(pieces)];
        wantsComma = random() % 10 != 0;
    }
    return text += end;
}

TEST(JSONReader, AcceptsExactlyWhatAnotherReaderDoes) {
    std::mt19937 random(3);
    int accepted = 0;
    for (int round = 0; round < 50'000; ++round) {
        const std::string text = nearlyJSON(random);
        const bool expected =
            text.find('\0') == std::string::npos && nlohmann::json::accept(text); // which takes a zero byte for the end
        const auto value = json::parse(text);
        ASSERT_EQ(value.has_value(), expected) << text;
        if (!value) continue;
        ++accepted;
        const auto written = json::write(*value);
        ASSERT_TRUE(written) << text;
        ASSERT_EQ(json::parse(*written), value) << text;
        ASSERT_EQ(nlohmann::json::parse(*written), *value) << text;
    }
    EXPECT_GT(accepted, 2'500);
}

} // namespace
} // namespace tallyfoot
