#pragma once

#include "Tallyfoot/Events/RawValue.h"
#include "Tallyfoot/Export.h"

#include <array>
#include <string_view>

namespace tallyfoot {

// The kinds of events. The numbers are what Objective-C callers pass.
enum class EventType { crash, screen, action, gesture, selection, swipe, scroll, progress, alert };

inline constexpr std::array<std::string_view, 9> eventTypeTexts{"crash", "screen", "action",   "gesture", "selection",
                                                                "swipe", "scroll", "progress", "alert"};

constexpr const auto& rawValueTable(EventType) noexcept { return eventTypeTexts; }

// The text written under "evtType". Fatal for a number that is no case.
TALLYFOOT_EXPORT std::string_view rawValue(EventType type) noexcept;

static_assert(fromRawValue<EventType>("screen") == EventType::screen);
static_assert(!fromRawValue<EventType>("Screen"));

} // namespace tallyfoot
