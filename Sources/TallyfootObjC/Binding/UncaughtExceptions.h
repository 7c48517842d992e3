#pragma once

namespace tallyfoot::objc {

// Has crash capture hear of every NSException that nobody catches. Called once, while this library is loaded.
void connectUncaughtExceptions();

// Whether an exception that nobody catches ends in std::terminate, whose handler is then the runtime's own.
bool exceptionsEndInTerminate();

} // namespace tallyfoot::objc
