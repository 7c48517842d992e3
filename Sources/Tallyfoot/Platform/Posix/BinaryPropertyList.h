#pragma once

#include "Tallyfoot/Platform/PropertyList.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The binary form of property lists. A codec of our own: the usual library cuts a text at its first
// NUL, and lists that are built to be deep, or to name one object a million times, exhaust its stack
// and memory. Any thread.
namespace tallyfoot::binarypropertylist {

inline constexpr std::string_view signature = "bplist0";

// Against lists made to hurt: what may stand inside one another, and what all values may weigh.
inline constexpr int maximumDepth = 512;
inline constexpr std::size_t maximumWeight = 32u << 20; // bytes
inline constexpr std::size_t valueWeight = 64;          // of each value, besides its own bytes

// Nothing for what is malformed, cyclic, too deep or too heavy, and for a null. Of equal keys the
// first wins; an integer that needs more than 64 bits reads as a double.
std::optional<PropertyList> decoded(std::string_view bytes);

// Equal texts are written once. Ill-formed UTF-8 becomes U+FFFD.
std::string encoded(const PropertyList& list);

bool isUTF8(std::string_view text);

// A unique id, as a property list holds it.
PropertyList uniqueID(std::uint32_t number);
std::optional<std::uint32_t> uniqueIDOf(const PropertyList& list);

} // namespace tallyfoot::binarypropertylist
