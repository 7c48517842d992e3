#pragma once

#include "Tallyfoot/Capture/ObjectiveCRuntime.h"

#include <array>
#include <cstddef>

namespace tallyfoot {

// What live objects are asked. A table of their selectors is made once.
enum class Message {
    cellForItemAtIndexPath,
    cellForRowAtIndexPath,
    currentPage,
    currentTitle,
    customName,
    date,
    description,
    direction,
    forwardInvocation,
    forwardingTargetForSelector,
    indexPathForRowAtPoint,
    isActive,
    isContinuous,
    isOn,
    isSecureTextEntry,
    locationInView,
    logEnabled,
    navigationItem,
    searchBar,
    selectedSegmentIndex,
    state,
    subviews,
    superview,
    text,
    textLabel,
    title,
    titleForSegmentAtIndex,
    value,
    view
};

inline constexpr std::array<const char*, 29> messageSelectors{"cellForItemAtIndexPath:",
                                                              "cellForRowAtIndexPath:",
                                                              "currentPage",
                                                              "currentTitle",
                                                              "customName",
                                                              "date",
                                                              "description",
                                                              "direction",
                                                              "forwardInvocation:",
                                                              "forwardingTargetForSelector:",
                                                              "indexPathForRowAtPoint:",
                                                              "isActive",
                                                              "isContinuous",
                                                              "isOn",
                                                              "isSecureTextEntry",
                                                              "locationInView:",
                                                              "logEnabled",
                                                              "navigationItem",
                                                              "searchBar",
                                                              "selectedSegmentIndex",
                                                              "state",
                                                              "subviews",
                                                              "superview",
                                                              "text",
                                                              "textLabel",
                                                              "title",
                                                              "titleForSegmentAtIndex:",
                                                              "value",
                                                              "view"};

class Messages {
public:
    explicit Messages(ObjectiveCRuntime& runtime) {
        for (std::size_t index = 0; index < selectors_.size(); ++index)
            selectors_[index] = runtime.sel_registerName(messageSelectors[index]);
    }

    SelectorRef selector(Message message) const noexcept { return selectors_[static_cast<std::size_t>(message)]; }

private:
    std::array<SelectorRef, messageSelectors.size()> selectors_;
};

} // namespace tallyfoot
