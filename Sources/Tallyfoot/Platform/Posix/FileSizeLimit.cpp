#include "Tallyfoot/Platform/FileSizeLimit.h"

#include "Tallyfoot/Platform/Posix/WriteSignals.h"

namespace tallyfoot {

Result<void> withinFileSizeLimit(FunctionRef<Result<void>()> work) {
    WriteSignals signals;
    auto done = work();
    if (!done) signals.takeAway(SIGXFSZ);
    return done;
}

} // namespace tallyfoot
