#pragma once

#include "Tallyfoot/Platform/Clock.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// Text helpers with the platform's edge behaviour. Texts are UTF-8; a character is a grapheme
// cluster; white space is the platform's set of white space and newlines. An ill-formed sequence
// counts as one U+FFFD and is kept as it is. Searches are literal: byte for byte, without regard to
// locale, case or composed forms, also inside a character. An empty text is found nowhere.
namespace tallyfoot::text {

using Data = std::string; // bytes

std::optional<Data> utf8Data(std::string_view text); // nothing only if the text is not well-formed
std::string utf8String(std::string_view bytes);      // ill-formed sequences become U+FFFD
bool isWellFormed(std::string_view bytes) noexcept;

bool isEmptyBySpaceTrim(std::string_view text);
std::string prefix(std::string_view text, std::string_view prefix); // prefix-text, or text for a blank prefix
std::string prefer(std::string_view text, std::string_view candidate);

std::optional<std::string> stringAfter(std::string_view text, std::string_view marker);
std::optional<std::string> slice(std::string_view text, std::string_view from, std::string_view to);
// Despite its name it tests for a prefix, of whole characters; then the last count(suffix) ones go.
std::string deletingSuffix(std::string_view text, std::string_view suffix);
bool contains(std::string_view text, std::span<const std::string_view> list);
std::optional<Date> date(std::string_view text, std::string_view format);

std::size_t length(std::string_view text);                          // characters
std::string character(std::string_view text, std::ptrdiff_t index); // "" outside
// Bounds are clamped into 0...length first; fatal if the upper one then lies below the lower one.
std::string characters(std::string_view text, std::ptrdiff_t lower, std::ptrdiff_t upper);
std::string substringFromIndex(std::string_view text, std::ptrdiff_t index);
std::string substringToIndex(std::string_view text, std::ptrdiff_t index);

} // namespace tallyfoot::text
