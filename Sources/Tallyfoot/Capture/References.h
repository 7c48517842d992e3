#pragma once

#include <compare>

namespace tallyfoot {

// What the platform's runtime hands out, borrowed for the length of one call: a pointer that nobody
// looks behind but the binding. A default one is nil.
template <class Tag>
struct Reference {
    void* pointer = nullptr;

    explicit operator bool() const noexcept { return pointer != nullptr; }
    auto operator<=>(const Reference&) const = default;
};

using ObjectRef = Reference<struct ObjectTag>;     // id
using ClassRef = Reference<struct ClassTag>;       // Class
using MethodRef = Reference<struct MethodTag>;     // Method
using SelectorRef = Reference<struct SelectorTag>; // SEL

// IMP.
struct ImplementationRef {
    void (*function)() = nullptr;

    explicit operator bool() const noexcept { return function != nullptr; }
    bool operator==(const ImplementationRef&) const = default;
};

} // namespace tallyfoot
