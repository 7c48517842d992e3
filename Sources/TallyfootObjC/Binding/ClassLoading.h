#pragma once

namespace tallyfoot::objc {

// Prepares capture for UIKit's classes as they are loaded, so that a host may use the options of its
// views before it uses anything else. Called once, while this library is loaded.
void prepareWithClasses();

} // namespace tallyfoot::objc
