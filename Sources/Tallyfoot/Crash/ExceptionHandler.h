#pragma once

#include "Tallyfoot/Crash/CrashContext.h"
#include "Tallyfoot/Crash/CrashFacade.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/PropertyList.h"
#include "Tallyfoot/Platform/SignalSafeStore.h"
#include "Tallyfoot/Platform/SignalSafeText.h"

#include <atomic>
#include <memory>
#include <string_view>
#include <thread>

namespace tallyfoot {

// Keeps a crash, and tells it at the next start.
//
// No record -> an uncaught exception or a fatal signal: its record is stored under "crash" in the user
// defaults, in place of one that has not been told yet -> the next start: logged as an event of type
// "crash" and removed. Logged before it is removed: a process that ends in between tells it again, under
// the same identifier, rather than never.
//
// The hooks are the process's; those of the last one that was installed count. They take no lock and
// no memory, so that it does not matter what the crashing thread held.
class ExceptionHandler {
public:
    ExceptionHandler(const PlatformServices& services, CrashContext& context, CrashFacade& facade);
    ~ExceptionHandler();
    ExceptionHandler(const ExceptionHandler&) = delete;
    ExceptionHandler& operator=(const ExceptionHandler&) = delete;

    // At every configure, on its thread: the hook for exceptions, those for SIGABRT, SIGILL, SIGSEGV,
    // SIGFPE, SIGBUS and SIGPIPE, then the crash of the previous run, if there is one to tell.
    void install();

private:
    void prepare();
    void installHooks();
    void reportStoredCrash();
    void clear(const PropertyList& told);

    static void onException(std::string_view reason) noexcept;
    static void onSignal(int number) noexcept;
    void save(std::string_view reason) noexcept;

    const PlatformServices services_;
    CrashContext& context_;
    CrashFacade& facade_;

    SignalSafeText identifier_; // of the crash to come
    std::unique_ptr<SignalSafeStore> storage_;
    std::atomic<SignalSafeStore*> store_{nullptr}; // null where the user has no place for it
    std::atomic<bool> isPreparing_{false};
    std::atomic<bool> isReporting_{false};
    std::atomic<bool> isSaving_{false};
    std::atomic<std::thread::id> clearing_{}; // the thread that removes what was told
};

} // namespace tallyfoot
