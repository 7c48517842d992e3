#include "Tallyfoot/Platform/Posix/PosixDispatch.h"

#include "Tallyfoot/Platform/Posix/PosixDispatchQueue.h"
#include "Tallyfoot/Platform/Posix/PosixDispatchSourceTimer.h"
#include "Tallyfoot/Platform/Posix/TimerThread.h"

namespace tallyfoot {

std::shared_ptr<DispatchQueue> PosixDispatch::makeQueue(std::string label) {
    return std::make_shared<PosixDispatchQueue>(std::move(label));
}

std::unique_ptr<DispatchSourceTimer> PosixDispatch::makeTimerSource(std::shared_ptr<DispatchQueue> queue) {
    return std::make_unique<PosixDispatchSourceTimer>(std::move(queue), TimerThread::shared());
}

} // namespace tallyfoot
