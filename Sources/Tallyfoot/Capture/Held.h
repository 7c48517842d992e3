#pragma once

#include "Tallyfoot/Capture/ObjectiveCRuntime.h"

namespace tallyfoot {

// An object that must outlive what the host does in between.
class Held {
public:
    Held(ObjectiveCRuntime& runtime, ObjectRef object) : runtime_(runtime), object_(object) {
        if (object_) runtime_.objc_retain(object_);
    }
    ~Held() {
        if (object_) runtime_.objc_release(object_);
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

private:
    ObjectiveCRuntime& runtime_;
    ObjectRef object_;
};

} // namespace tallyfoot
