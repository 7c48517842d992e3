#include "Tallyfoot/Events/FileEventFormatter.h"
#include "Tallyfoot/Events/Text.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <random>

namespace tallyfoot {
namespace {

std::string format(const Attributes& properties) {
    return FileEventFormatter().format(Event{EventType::action, properties}).value();
}

// What stands between the quotation marks of the one value of an event.
std::string rendered(std::string_view value) {
    const std::string text = format({{LogAttribute::evtLabel, value}});
    const std::string_view before = "{\n  \"evtLabel\" : \"";
    const std::string_view after = "\"\n}";
    EXPECT_TRUE(text.starts_with(before) && text.ends_with(after)) << text;
    return text.substr(before.size(), text.size() - before.size() - after.size());
}

TEST(FileEventFormatter, WritesOneMemberALineUnderTheRecordKeys) {
    EXPECT_EQ(
        format({{LogAttribute::evtId, "1"}, {LogAttribute::evtType, "screen"}, {LogAttribute::screenTitle, "Home"}}),
        "{\n"
        "  \"evtId\" : \"1\",\n"
        "  \"evtType\" : \"screen\",\n"
        "  \"pgName\" : \"Home\"\n"
        "}");
}

TEST(FileEventFormatter, WritesEveryAttributeUnderItsOwnKey) {
    Attributes all;
    std::string expected;
    for (std::size_t place = 0; place < logAttributeTexts.size(); ++place) {
        all.set(static_cast<LogAttribute>(place), std::to_string(place));
        expected += (place == 0 ? "{\n  \"" : ",\n  \"") + std::string(logAttributeTexts[place]) + "\" : \""
                    + std::to_string(place) + "\"";
    }
    EXPECT_EQ(format(all), expected + "\n}");
}

TEST(FileEventFormatter, DoesNotWriteTheTypeOfTheEvent) {
    const Event event{EventType::crash, {{LogAttribute::evtLabel, "x"}}};
    EXPECT_EQ(FileEventFormatter().format(event)->find("crash"), std::string::npos);
}

TEST(FileEventFormatter, AnEventWithoutPropertiesIsAnEmptyObject) { EXPECT_EQ(format({}), "{\n\n}"); }

TEST(FileEventFormatter, AnEmptyValueIsWritten) { EXPECT_EQ(rendered(""), ""); }

TEST(FileEventFormatter, EscapesTheSolidus) { EXPECT_EQ(rendered("a/b//"), R"(a\/b\/\/)"); }

TEST(FileEventFormatter, EscapesTheLineFeed) { EXPECT_EQ(rendered("a\nb"), R"(a\nb)"); }

TEST(FileEventFormatter, EscapesQuotationMarksAndBackslashes) {
    EXPECT_EQ(rendered(R"(say "a\b")"), R"(say \"a\\b\")");
}

TEST(FileEventFormatter, EscapesControlCharactersInLowerCase) {
    EXPECT_EQ(rendered("\b\f\n\r\t"), R"(\b\f\n\r\t)");
    EXPECT_EQ(rendered("\x01\x0B\x1B\x1F"), R"(\u0001\u000b\u001b\u001f)");
    EXPECT_EQ(rendered(std::string_view("a\0b", 3)), R"(a\u0000b)");
}

TEST(FileEventFormatter, EverythingElseGoesOutAsItIs) {
    EXPECT_EQ(rendered("\x7F"), "\x7F");
    EXPECT_EQ(rendered("\u2028\u2029\u00E9 \u4E2D \U0001F600"), "\u2028\u2029\u00E9 \u4E2D \U0001F600");
    EXPECT_EQ(rendered("jsonsplit"), "jsonsplit");
}

// The text of one byte among plain ones.
std::string renderedByte(unsigned char byte) {
    switch (byte) {
    case '"': return "\\\"";
    case '/': return "\\/";
    case '\\': return "\\\\";
    case '\b': return "\\b";
    case '\f': return "\\f";
    case '\n': return "\\n";
    case '\r': return "\\r";
    case '\t': return "\\t";
    default: break;
    }
    if (byte >= 0x80) return "\uFFFD";
    if (byte >= 0x20) return {static_cast<char>(byte)};
    const std::string_view digits = "0123456789abcdef";
    return std::string("\\u00") + digits[byte / 16U] + digits[byte % 16U];
}

TEST(FileEventFormatter, EveryByteIsSeenWhereverItStands) {
    for (const std::size_t size : {1U, 8U, 15U, 16U, 17U, 31U, 32U, 33U, 50U}) {
        for (std::size_t place = 0; place < size; ++place) {
            for (unsigned byte = 0; byte < 0x100; ++byte) {
                std::string value(size, 'x');
                value[place] = static_cast<char>(byte);
                std::string expected(size, 'x');
                expected.replace(place, 1, renderedByte(static_cast<unsigned char>(byte)));
                ASSERT_EQ(rendered(value), expected) << byte << " at " << place << " of " << size;
            }
        }
    }
}

TEST(FileEventFormatter, ReplacesIllFormedSequencesByTheirMaximalSubparts) {
    EXPECT_EQ(rendered("a\x80z"), "a\uFFFDz");                           // a lone trailing byte
    EXPECT_EQ(rendered("\xC0\xAF"), "\uFFFD\uFFFD");                     // too long a form
    EXPECT_EQ(rendered("\xE2\x82z"), "\uFFFDz");                         // broken off: one for the two bytes
    EXPECT_EQ(rendered("\xF0\x9F\x98"), "\uFFFD");                       // broken off at the end
    EXPECT_EQ(rendered("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");           // a surrogate
    EXPECT_EQ(rendered("\xF4\x90\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD"); // beyond the last character
    EXPECT_EQ(rendered("\xE2\x82\""), "\uFFFD\\\"");                     // what follows is escaped as ever
    EXPECT_EQ(rendered("\xC3\xC3\xA9"), "\uFFFD\u00E9");
}

TEST(FileEventFormatter, ReplacesWhatTheBufferHeld) {
    std::string buffer = "left over";
    ASSERT_TRUE(FileEventFormatter().format(Attributes{{LogAttribute::evtId, "1"}}, buffer));
    EXPECT_EQ(buffer, "{\n  \"evtId\" : \"1\"\n}");
}

TEST(FileEventFormatter, AGrownBufferIsNotAllocatedAnew) {
    const Attributes properties{{LogAttribute::evtId, std::string(300, '/')}, {LogAttribute::evtType, "x"}};
    std::string buffer;
    ASSERT_TRUE(FileEventFormatter().format(properties, buffer));
    const char* const place = buffer.data();
    const std::size_t capacity = buffer.capacity();
    for (int again = 0; again < 10; ++again) ASSERT_TRUE(FileEventFormatter().format(properties, buffer));
    EXPECT_EQ(buffer.data(), place);
    EXPECT_EQ(buffer.capacity(), capacity);
}

TEST(FileEventFormatter, EveryRecordIsJSONThatReadsBackWhateverTheBytes) {
    std::mt19937 random(11);
    for (int round = 0; round < 3000; ++round) {
        Attributes properties;
        for (std::size_t place = 0; place < logAttributeTexts.size(); ++place) {
            if (random() % 2 == 0) continue;
            std::string value(random() % 24, '\0');
            // Every other value is mostly plain text, so that runs of all lengths meet every byte.
            for (char& byte : value)
                byte = static_cast<char>(round % 2 == 0 || random() % 8 == 0 ? random() : 'a' + random() % 26);
            properties.set(static_cast<LogAttribute>(place), std::move(value));
        }
        const std::string text = format(properties);
        const auto object = nlohmann::json::parse(text, nullptr, false);
        ASSERT_TRUE(object.is_object()) << text;
        ASSERT_EQ(object.size(), properties.size());
        properties.forEach([&](LogAttribute key, const std::string& value) {
            ASSERT_EQ(object[std::string(rawValue(key))].get<std::string>(), text::utf8String(value));
        });
    }
}

} // namespace
} // namespace tallyfoot
