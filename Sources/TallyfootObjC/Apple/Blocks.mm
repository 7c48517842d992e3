#include "TallyfootObjC/Support/Blocks.h"

#include <Block.h>

namespace tallyfoot::objc {

std::shared_ptr<void> copyBlock(const void* block) {
    return {_Block_copy(block), [](void* copy) { _Block_release(copy); }};
}

} // namespace tallyfoot::objc
