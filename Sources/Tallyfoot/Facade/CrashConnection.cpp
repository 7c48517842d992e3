#include "Tallyfoot/Facade/CrashConnection.h"

#include <atomic>

namespace tallyfoot {

namespace {

constinit std::atomic<const CrashHooks::ExceptionRuntime*> connected = nullptr;

} // namespace

void connectExceptions(const CrashHooks::ExceptionRuntime& runtime) { connected = &runtime; }

void connectExceptionsTo(CrashHooks& hooks) {
    if (const auto* const runtime = connected.load()) hooks.connect(*runtime);
}

} // namespace tallyfoot
