#include "TallyfootObjC/Binding/UncaughtExceptions.h"

#include "TallyfootObjC/Support/Guard.h"
#include "TallyfootObjC/Support/Text.h"

#include "Tallyfoot/Facade/CrashConnection.h"

#import <Foundation/Foundation.h>

#include <atomic>

namespace tallyfoot::objc {

namespace {

using Hook = CrashHooks::ExceptionRuntime::Hook;

constinit std::atomic<Hook> exceptionHook{nullptr};

// What the exception itself does when it is asked is the host's: it may raise another one.
std::string reasonOf(NSException* exception) {
    std::string reason;
    guarded([&] {
        @autoreleasepool {
            if ([exception isKindOfClass:[NSException class]]) reason = text([exception reason]);
        }
    });
    return reason;
}

void onException(NSException* exception) {
    exceptionHook.load()([exception] { return reasonOf(exception); });
}

void setUncaughtExceptionHandler(Hook hook) {
    exceptionHook.store(hook);
    NSSetUncaughtExceptionHandler(onException);
}

} // namespace

void connectUncaughtExceptions() {
    static const CrashHooks::ExceptionRuntime runtime{setUncaughtExceptionHandler, exceptionsEndInTerminate()};
    connectExceptions(runtime);
}

} // namespace tallyfoot::objc
