#pragma once

namespace tallyfoot {

struct ScreenBounds {
    double width; // points
    double height;
};

// The main screen. Any thread. Apple: UIScreen.
class Screen {
public:
    virtual ~Screen() = default;
    virtual ScreenBounds bounds() const = 0;

    // The host's word where the platform knows none; ignored where it does.
    virtual void setBounds(ScreenBounds) {}
};

} // namespace tallyfoot
