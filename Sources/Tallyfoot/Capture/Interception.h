#pragma once

#include "Tallyfoot/Capture/CapturePlatform.h"

namespace tallyfoot {

// How methods are put in the place of others. What is missing is skipped without a word.
class Interception {
public:
    explicit Interception(const CapturePlatform& platform) : runtime_(platform.runtime) {}

    // Afterwards `original` runs what `replacement` ran, and the other way round. A class that only
    // inherits `original` gets its own; its superclass keeps what it had.
    void swizzle(SelectorRef original, SelectorRef replacement, ClassRef forClass) const;

    // Whether the class that the object gives for coding has the method.
    bool hasMethod(ObjectRef object, SelectorRef selector) const;

    // Afterwards the class's `original` is `replacement`, which finds what was there under
    // `renameOriginal`. An inherited method is changed where it is defined. A class that has been
    // intercepted stays as it is, whoever came in between.
    void addInterceptMethod(SelectorRef original, SelectorRef replacement, ClassRef forClass,
                            SelectorRef renameOriginal, const char* types) const;

    // The class, this one or a superclass, that has the method; nil where none has. Of a live object's class.
    ClassRef definingClass(ClassRef first, SelectorRef selector) const;

private:
    void intercept(SelectorRef original, ImplementationRef replacement, ClassRef forClass, SelectorRef renameOriginal,
                   const char* types) const;

    ObjectiveCRuntime& runtime_;
};

} // namespace tallyfoot
