#pragma once

#include "Tallyfoot/Platform/FunctionRef.h"

namespace tallyfoot::objc {

// Runs the block; false when it ended in an exception, of either language. errno stays as it was.
// Defined in a plain C++ source: on GCC's runtime an Objective-C++ frame runs its destructors for
// every exception, but catches none that C++ threw, and catches the others wrongly in C++'s words.
bool guarded(FunctionRef<void()> block) noexcept;

// What the block returns, or a value made without arguments where it ended in an exception.
template <class Value, class Block>
Value guardedValue(Block&& block) noexcept {
    Value value{};
    guarded([&] { value = block(); });
    return value;
}

} // namespace tallyfoot::objc
