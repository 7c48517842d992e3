// GCC's runtime learns of classes one file after the other, those of a program after those of its
// libraries, and tells who asks (of a class, after its `load`). Foundation stops that when it has loaded a bundle; by
// then the program's own classes are there, and what comes later is prepared for when capture is switched on.

#include "TallyfootObjC/Binding/ClassLoading.h"

#include "TallyfootObjC/Binding/Binding.h"

#include <objc/runtime.h>

#include <string_view>

namespace tallyfoot::objc {

namespace {

using LoadCallback = void (*)(Class, objc_category*);
LoadCallback formerCallback = nullptr;

void loaded(Class aClass, objc_category* category) {
    if (formerCallback != nullptr) formerCallback(aClass, category);
    if (category == nullptr && std::string_view(class_getName(aClass)).starts_with("UI")) capture().prepare();
}

// Before any class of the same program is loaded, where the library is a part of one.
__attribute__((constructor(101))) void beTold() {
    formerCallback = _objc_load_callback;
    _objc_load_callback = loaded;
}

} // namespace

void prepareWithClasses() { capture().prepare(); } // for those that came before

} // namespace tallyfoot::objc
