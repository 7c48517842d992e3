#pragma once

#include <memory>

namespace tallyfoot::objc {

// A block that outlives the call it was given to, with all that it captured.
std::shared_ptr<void> copyBlock(const void* block);

} // namespace tallyfoot::objc
