#pragma once

#include "Tallyfoot/Platform/CrashHooks.h"

namespace tallyfoot {

// Signal actions and std::set_terminate. A handler runs on its thread's alternate stack where there is
// one. From the crash on, an alarm ends a process whose hook or exit handlers hang.
//
// What an uncaught exception leaves behind is the default of the C++ runtime: its message on
// standard error, then SIGABRT with its default action.
class PosixCrashHooks final : public CrashHooks {
public:
    void setUncaughtExceptionHandler(ExceptionHook hook) override;
    void connect(const ExceptionRuntime& runtime) override; // which stays the caller's, and stays
    void signal(int number, SignalHook hook) override;
    [[noreturn]] void exit(int status) noexcept override;
    void prepareThread() noexcept override;
    void pause() noexcept override;
};

} // namespace tallyfoot
