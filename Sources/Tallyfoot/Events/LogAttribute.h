#pragma once

#include "Tallyfoot/Events/RawValue.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace tallyfoot {

// The attributes of an event. Their texts are the keys of the stored record; several differ from
// the case's name. Documentation/EventFormat.md says what each of them means.
enum class LogAttribute {
    appName,
    crashReason,
    custom,
    deviceScrnDim,
    evtAction,
    evtCategory,
    evtId,
    evtLabel,
    evtLclTimestamp,
    evtType,
    screenTitle,
    tmspent,
    userAgent,
    userId,
    userIpAddress,
    userLogonTimestamp,
    window,
    windowDim
};

inline constexpr std::array<std::string_view, 18> logAttributeTexts{
    "appName",       "crashreason",        "custom",  "deviceScrnDim", "evtAction", "evtCategory", "evtId",
    "evtLabel",      "evtLclTimestamp",    "evtType", "pgName",        "tmspent",   "userAgent",   "userId",
    "userIpAddress", "userLogonTimestamp", "pgPrnt",  "browserViewDim"};

constexpr const auto& rawValueTable(LogAttribute) noexcept { return logAttributeTexts; }

constexpr std::string_view rawValue(LogAttribute attribute) noexcept {
    return logAttributeTexts[static_cast<std::size_t>(attribute)];
}

static_assert(fromRawValue<LogAttribute>("pgName") == LogAttribute::screenTitle);
static_assert(fromRawValue<LogAttribute>("crashreason") == LogAttribute::crashReason);
static_assert(!fromRawValue<LogAttribute>("screenTitle") && !fromRawValue<LogAttribute>("crashReason"));
static_assert(rawValue(LogAttribute::windowDim) == "browserViewDim");

} // namespace tallyfoot
