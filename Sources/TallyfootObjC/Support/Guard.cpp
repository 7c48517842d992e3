#include "TallyfootObjC/Support/Guard.h"

#include <cerrno>

namespace tallyfoot::objc {

bool guarded(FunctionRef<void()> block) noexcept {
    const int kept = errno;
    bool isCompleted = false;
    try {
        block();
        isCompleted = true;
    } catch (...) { // NOLINT(bugprone-empty-catch): there is nobody to tell
    }
    errno = kept;
    return isCompleted;
}

} // namespace tallyfoot::objc
