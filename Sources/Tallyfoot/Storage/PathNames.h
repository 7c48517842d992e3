#pragma once

#include <string>
#include <string_view>

// Names and paths as texts; nothing here looks at the disk.
namespace tallyfoot {

// The text as the name of one folder. Almost every text is its own name. One that would be no name,
// or would lead elsewhere (empty, ".", "..", with a "/" or NUL, longer than 255 bytes), becomes "%-"
// and the text percent-encoded; so does one that begins with "%-" itself, so that two texts never
// share a name. What is too long even then is cut, and ends in its length and a digest of it.
std::string pathComponent(std::string_view text);

// Whether the name means a visible file in the folder it is looked up in, wherever it came from:
// no "/", "\" or NUL in it, no "." in front.
bool isPlainFileName(std::string_view name) noexcept;

std::string_view lastPathComponent(std::string_view path) noexcept;

// "file:///…", percent-encoded.
std::string fileURL(std::string_view path);

} // namespace tallyfoot
