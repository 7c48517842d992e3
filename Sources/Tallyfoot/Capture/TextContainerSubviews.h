#pragma once

#include "Tallyfoot/Capture/PlatformObject.h"

#include <string>

namespace tallyfoot {

// The text that a view shows, in itself or in what it contains: the first one that is not empty, depth
// first. It looks at so many views and so deep, so that a huge hierarchy, or one in a circle, costs
// microseconds.
class TextContainerSubviews {
public:
    static constexpr int mostViews = 128;
    static constexpr int mostDepth = 16;

    explicit TextContainerSubviews(const PlatformObject& view) : view_(view) {}

    std::string text() const;         // "" where there is none
    std::string subviewsText() const; // of what it contains alone
    std::string cellText() const;     // of its text label, else of what it contains

private:
    PlatformObject view_;
};

} // namespace tallyfoot
