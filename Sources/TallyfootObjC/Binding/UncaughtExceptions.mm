#include "TallyfootObjC/Binding/UncaughtExceptions.h"

#include "TallyfootObjC/Support/Guard.h"
#include "TallyfootObjC/Support/Text.h"

#include "Tallyfoot/Facade/CrashConnection.h"

#import <Foundation/Foundation.h>

#include <atomic>

namespace tallyfoot::objc {

namespace {

using Hook = CrashHooks::ExceptionHook;

constinit std::atomic<Hook> exceptionHook{nullptr};

// What the exception itself does when it is asked is the host's: it may raise another one.
void onException(NSException* exception) {
    std::string reason;
    guarded([&] {
        @autoreleasepool {
            if ([exception isKindOfClass:[NSException class]]) reason = text([exception reason]);
        }
    });
    exceptionHook.load()(reason);
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
