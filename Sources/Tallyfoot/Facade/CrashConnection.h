#pragma once

#include "Tallyfoot/Export.h"
#include "Tallyfoot/Platform/CrashHooks.h"

namespace tallyfoot {

// For the binding of a platform: from the next configure on, crash capture hears of the exceptions of its
// language too. Touches neither the facade nor the system, so that it may be called while the process's
// libraries are loaded. The runtime must live as long as the process.
TALLYFOOT_EXPORT void connectExceptions(const CrashHooks::ExceptionRuntime& runtime);

// Tells the hooks of the runtime that is connected by now, if any is.
void connectExceptionsTo(CrashHooks& hooks);

} // namespace tallyfoot
