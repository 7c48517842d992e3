#pragma once

#include <string_view>

namespace tallyfoot::objc {

// Whether an entry of this thread's call stack, written "-[UIControl touchesEnded:withEvent:]", contains
// the marker: the end of a class's name, a space and the beginning of a selector.
bool callStackContains(std::string_view marker);

} // namespace tallyfoot::objc
