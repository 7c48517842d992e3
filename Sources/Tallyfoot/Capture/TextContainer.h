#pragma once

#include "Tallyfoot/Capture/PlatformObject.h"

#include <optional>
#include <string>

namespace tallyfoot {

// A view that bears a text of its own: a label or a text field.
class TextContainer {
public:
    // Nothing for any other view.
    static std::optional<TextContainer> of(const PlatformObject& view);

    bool isSecure() const;    // hides what is typed: neither its text nor what it contains is to be read
    std::string text() const; // "" where it has none

private:
    explicit TextContainer(const PlatformObject& view) : view_(view) {}

    PlatformObject view_;
};

} // namespace tallyfoot
