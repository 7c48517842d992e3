#pragma once

#include "Tallyfoot/Platform/FunctionRef.h"

#include <string>
#include <string_view>

namespace tallyfoot {

// The two ways a process crashes, and its end. One set of hooks a process: installing replaces whatever
// was there, the host's own included, and chains to nothing. Apple: NSSetUncaughtExceptionHandler,
// signal and exit.
//
// Of several crashes the first one's hook runs, on the thread that crashed; whoever crashes meanwhile
// waits until what the hook keeps has been kept, and then ends the process. A crash inside a hook ends
// it at once. A process forked afterwards crashes as if there were no hooks.
class CrashHooks {
public:
    // Gets the exception's reason, or "" where it has none. When it returns, the process ends as an
    // uncaught exception ends it; the hook for the abort is passed over.
    using ExceptionHook = void (*)(std::string_view reason) noexcept;
    // Gets the signal's number, and ends with `exit`. May call only what is async-signal-safe.
    using SignalHook = void (*)(int number) noexcept;

    virtual ~CrashHooks() = default;

    // Another language's way of throwing, whose uncaught exceptions C++ does not hear of or cannot name.
    struct ExceptionRuntime {
        // Asks the exception for its reason, "" where it has none, once at most. That may run code of the
        // host's: a reason that does not come in good time counts as none, and the process is aborted.
        using Hook = void (*)(FunctionRef<std::string()> reason) noexcept;
        // Has the hook called for every exception that nobody catches; then the runtime ends the process
        // as it always does. Replaces the host's handler.
        void (*setUncaughtExceptionHandler)(Hook hook);
        // Such an exception ends in std::terminate, whose handler is the runtime's own and must stay.
        bool endsInTerminate;
    };

    virtual void setUncaughtExceptionHandler(ExceptionHook hook) = 0;
    // From the next setUncaughtExceptionHandler on; of the runtimes the last one counts. Any thread.
    virtual void connect(const ExceptionRuntime& runtime) = 0;
    virtual void signal(int number, SignalHook hook) = 0;

    // Ends a signal hook: what is kept is kept. Runs the process's exit handlers; should these crash or take
    // more than some seconds, the process ends without the rest of them, with the same status if it can.
    [[noreturn]] virtual void exit(int status) noexcept = 0;

    // Gives the calling thread what a hook needs should its stack be used up. Cheap after the first call.
    virtual void prepareThread() noexcept = 0;

    // Lets other threads go on for about a millisecond. Async-signal-safe.
    virtual void pause() noexcept = 0;
};

} // namespace tallyfoot
