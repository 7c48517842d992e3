#include "Tallyfoot/Platform/Posix/PosixScreen.h"

namespace tallyfoot {

ScreenBounds PosixScreen::bounds() const { return bounds_.copy(); }

void PosixScreen::setBounds(ScreenBounds bounds) { bounds_.exchange(bounds); }

} // namespace tallyfoot
