#pragma once

#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Platform/Screen.h"

namespace tallyfoot {

// There is no main screen to ask: 0 by 0 until the host says what its size is.
class PosixScreen final : public Screen {
public:
    ScreenBounds bounds() const override;
    void setBounds(ScreenBounds bounds) override;

private:
    Exclusive<ScreenBounds> bounds_;
};

} // namespace tallyfoot
