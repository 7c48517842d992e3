#pragma once

#include <string_view>

namespace tallyfoot {

// The media type that belongs to the file name's extension, in either case;
// "application/octet-stream" when there is none or nobody knows it.
std::string_view mimeType(std::string_view fileName) noexcept;

} // namespace tallyfoot
