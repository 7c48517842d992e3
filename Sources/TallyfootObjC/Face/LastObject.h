#pragma once

#include "Tallyfoot/Platform/Mutex.h"

#import <Foundation/Foundation.h>

namespace tallyfoot::objc {

// The object that stands for a record which the C++ facade holds, so that whoever sets an object gets
// that same object back. Any thread.
class LastObject {
public:
    void keep(id object, const void* record) {
        id former = [object retain];
        {
            MutexLock lock(mutex_);
            former = exchange(former);
            record_ = record;
        }
        [former release]; // after the lock: how an object goes is the host's business
    }

    // Autoreleased; nil for another record.
    id find(const void* record) {
        MutexLock lock(mutex_);
        return record != nullptr && record == record_ ? [[object_ retain] autorelease] : nil;
    }

private:
    id exchange(id object) TALLYFOOT_REQUIRES(mutex_) {
        id former = object_;
        object_ = object;
        return former;
    }

    Mutex mutex_;
    id object_ TALLYFOOT_GUARDED_BY(mutex_) = nil;
    const void* record_ TALLYFOOT_GUARDED_BY(mutex_) = nullptr; // held by the object
};

} // namespace tallyfoot::objc
