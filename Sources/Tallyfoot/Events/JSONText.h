#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The single pieces of JSON text. Each appends to a buffer that the caller keeps. No state; any thread.
namespace tallyfoot::json {

inline constexpr int deepestLevel = 512; // of arrays and objects inside each other

// The inside of a JSON string: quotation mark, backslash, solidus and control characters escaped,
// everything else as it is. Ill-formed sequences become U+FFFD, and the result is false.
bool appendEscaped(std::string& into, std::string_view text);
bool appendQuoted(std::string& into, std::string_view text); // the same with its quotation marks

// The first byte that a string cannot show as it is without a closer look: an escaped one, or one
// beyond ASCII; or the end.
const unsigned char* skipPlainBytes(const unsigned char* at, const unsigned char* end) noexcept;

// Copies a text that a string shows as it is and returns where the copy ends; nullptr when the text has
// any other byte, and what stands at `to` is of no use then.
char* copyPlain(char* to, std::string_view text) noexcept;

void appendInteger(std::string& into, std::int64_t number);
void appendUnsigned(std::string& into, std::uint64_t number);
// The shortest digits that read back the same, without ".0". False, and nothing appended, unless finite.
bool appendReal(std::string& into, double number);

// The nearest double to a number in JSON's grammar; nothing when it lies beyond the largest one.
std::optional<double> realNumber(std::string_view text);

} // namespace tallyfoot::json
