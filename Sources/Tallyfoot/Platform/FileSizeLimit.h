#pragma once

#include "Tallyfoot/Platform/FunctionRef.h"
#include "Tallyfoot/Platform/Result.h"

namespace tallyfoot {

// Runs, on this thread, work in which a library writes files by itself. Where a file would grow beyond the limit
// of the process, its write fails with an error of the system instead of ending the host.
Result<void> withinFileSizeLimit(FunctionRef<Result<void>()> work);

} // namespace tallyfoot
