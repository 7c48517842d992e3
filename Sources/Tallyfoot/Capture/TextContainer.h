#pragma once

#include "Tallyfoot/Capture/PlatformObject.h"

#include <optional>
#include <string>

namespace tallyfoot {

// A view that bears a text of its own: a label or a text field, but none that hides what is typed.
class TextContainer {
public:
    // Nothing for any other view.
    static std::optional<TextContainer> of(const PlatformObject& view);

    std::string text() const; // "" where it has none

private:
    explicit TextContainer(const PlatformObject& view) : view_(view) {}

    PlatformObject view_;
};

} // namespace tallyfoot
