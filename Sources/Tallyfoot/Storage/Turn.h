#pragma once

#include "Tallyfoot/Platform/FunctionRef.h"

namespace tallyfoot {

// Takes the recorder's turn for the length of one block; how a long operation keeps each turn short.
using Turn = FunctionRef<void(FunctionRef<void()>)>;

// So many files are renamed in one turn: well below a millisecond.
inline constexpr int filesPerTurn = 32;

} // namespace tallyfoot
