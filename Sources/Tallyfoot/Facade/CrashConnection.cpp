#include "Tallyfoot/Facade/CrashConnection.h"

#include <atomic>

namespace tallyfoot {

namespace {

constinit std::atomic<const CrashHooks::ExceptionRuntime*> connectedRuntime = nullptr;

} // namespace

void connectExceptions(const CrashHooks::ExceptionRuntime& runtime) { connectedRuntime = &runtime; }

void connectExceptionsTo(CrashHooks& hooks) {
    if (const auto* const runtime = connectedRuntime.load()) hooks.connect(*runtime);
}

} // namespace tallyfoot
