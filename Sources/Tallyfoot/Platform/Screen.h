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
};

} // namespace tallyfoot
