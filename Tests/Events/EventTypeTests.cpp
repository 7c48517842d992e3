#include "Tallyfoot/Events/EventType.h"

#include <gtest/gtest.h>

namespace tallyfoot {
namespace {

TEST(EventType, HasTheStatedCasesNumbersAndTexts) {
    const std::pair<EventType, std::string_view> cases[] = {
        {EventType::crash, "crash"},     {EventType::screen, "screen"},       {EventType::action, "action"},
        {EventType::gesture, "gesture"}, {EventType::selection, "selection"}, {EventType::swipe, "swipe"},
        {EventType::scroll, "scroll"},   {EventType::progress, "progress"},   {EventType::alert, "alert"},
    };
    ASSERT_EQ(std::size(cases), eventTypeTexts.size());
    int number = 0;
    for (const auto& [type, text] : cases) {
        EXPECT_EQ(static_cast<int>(type), number++) << text;
        EXPECT_EQ(rawValue(type), text);
        EXPECT_EQ(fromRawValue<EventType>(text), type);
    }
}

TEST(EventType, IsFoundByItsExactTextOnly) {
    EXPECT_EQ(fromRawValue<EventType>("Screen"), std::nullopt);
    EXPECT_EQ(fromRawValue<EventType>(" screen"), std::nullopt);
    EXPECT_EQ(fromRawValue<EventType>("screen\n"), std::nullopt);
    EXPECT_EQ(fromRawValue<EventType>("purchase"), std::nullopt);
    EXPECT_EQ(fromRawValue<EventType>(""), std::nullopt);
}

TEST(EventTypeDeathTest, TheTextOfANumberThatIsNoCaseIsFatal) {
    EXPECT_DEATH(rawValue(static_cast<EventType>(9)), "unexpected EventType");
    EXPECT_DEATH(rawValue(static_cast<EventType>(-1)), "unexpected EventType");
}

} // namespace
} // namespace tallyfoot
