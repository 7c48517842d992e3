#include "Tallyfoot/Events/LogAttribute.h"

#include <gtest/gtest.h>

namespace tallyfoot {
namespace {

TEST(LogAttribute, HasTheStatedCasesAndRecordKeys) {
    const std::pair<LogAttribute, std::string_view> cases[] = {
        {LogAttribute::appName, "appName"},
        {LogAttribute::crashReason, "crashreason"},
        {LogAttribute::custom, "custom"},
        {LogAttribute::deviceScrnDim, "deviceScrnDim"},
        {LogAttribute::evtAction, "evtAction"},
        {LogAttribute::evtCategory, "evtCategory"},
        {LogAttribute::evtId, "evtId"},
        {LogAttribute::evtLabel, "evtLabel"},
        {LogAttribute::evtLclTimestamp, "evtLclTimestamp"},
        {LogAttribute::evtType, "evtType"},
        {LogAttribute::screenTitle, "pgName"},
        {LogAttribute::tmspent, "tmspent"},
        {LogAttribute::userAgent, "userAgent"},
        {LogAttribute::userId, "userId"},
        {LogAttribute::userIpAddress, "userIpAddress"},
        {LogAttribute::userLogonTimestamp, "userLogonTimestamp"},
        {LogAttribute::window, "pgPrnt"},
        {LogAttribute::windowDim, "browserViewDim"},
    };
    ASSERT_EQ(std::size(cases), logAttributeTexts.size());
    int place = 0;
    for (const auto& [attribute, key] : cases) {
        EXPECT_EQ(static_cast<int>(attribute), place++) << key;
        EXPECT_EQ(rawValue(attribute), key);
        EXPECT_EQ(fromRawValue<LogAttribute>(key), attribute);
    }
}

TEST(LogAttribute, NamesOfCasesAreNoKeys) {
    EXPECT_EQ(fromRawValue<LogAttribute>("screenTitle"), std::nullopt);
    EXPECT_EQ(fromRawValue<LogAttribute>("window"), std::nullopt);
    EXPECT_EQ(fromRawValue<LogAttribute>("windowDim"), std::nullopt);
    EXPECT_EQ(fromRawValue<LogAttribute>("crashReason"), std::nullopt);
    EXPECT_EQ(fromRawValue<LogAttribute>("pgname"), std::nullopt);
    EXPECT_EQ(fromRawValue<LogAttribute>(""), std::nullopt);
}

} // namespace
} // namespace tallyfoot
