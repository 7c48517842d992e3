#pragma once

#import <Foundation/Foundation.h>
#include <objc/runtime.h>

#include <memory>
#include <utility>

// An object's share of a C++ record, as its one instance variable: GCC's runtime runs no C++ constructors.
namespace tallyfoot::objc {

template <class Record>
void hold(void*& place, std::shared_ptr<Record> record) {
    auto* const holder = new std::shared_ptr<Record>(std::move(record));
    delete static_cast<std::shared_ptr<Record>*>(std::exchange(place, holder));
}

template <class Record>
void letGo(void*& place) {
    delete static_cast<std::shared_ptr<Record>*>(std::exchange(place, nullptr));
}

// None in an object of another class, whatever class it passes for, and in one that was never initialised.
template <class Record>
std::shared_ptr<Record> held(id object, Class expected, void* const* place) {
    // By the runtime's word, not by the object's own: a proxy has no such instance variable.
    Class aClass = object_getClass(object);
    while (aClass != Nil && aClass != expected) aClass = class_getSuperclass(aClass);
    if (aClass == Nil || *place == nullptr) return nullptr;
    return *static_cast<const std::shared_ptr<Record>*>(*place);
}

} // namespace tallyfoot::objc
