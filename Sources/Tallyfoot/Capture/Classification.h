#pragma once

#include "Tallyfoot/Capture/ITFClass.h"
#include "Tallyfoot/Capture/PlatformObject.h"

#include <optional>

namespace tallyfoot {

// Which of the captured classes a sender counts as; nothing for any other. A swipe action's button goes
// by its exact class name, all others by their kind: an alert first, the rest as ITFClass lists them.
// So a collection view, being a scroll view, counts as one.
std::optional<ITFClass> classify(const PlatformObject& sender);

} // namespace tallyfoot
