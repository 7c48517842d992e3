#include "Tallyfoot/Platform/CancellationHold.h"

#include <pthread.h>

namespace tallyfoot {

CancellationHold::CancellationHold() noexcept { ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &former_); }

CancellationHold::~CancellationHold() {
    int held = 0;
    ::pthread_setcancelstate(former_, &held);
}

} // namespace tallyfoot
