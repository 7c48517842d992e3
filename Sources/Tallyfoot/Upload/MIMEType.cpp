#include "Tallyfoot/Upload/MIMEType.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tallyfoot {

namespace {

using Entry = std::pair<std::string_view, std::string_view>;

// Sorted by extension, in lower case.
constexpr std::array types{
    Entry{"7z", "application/x-7z-compressed"},
    Entry{"aac", "audio/aac"},
    Entry{"avi", "video/x-msvideo"},
    Entry{"bmp", "image/bmp"},
    Entry{"bz2", "application/x-bzip2"},
    Entry{"css", "text/css"},
    Entry{"csv", "text/csv"},
    Entry{"doc", "application/msword"},
    Entry{"docx", "application/vnd.openxmlformats-officedocument.wordprocessingml.document"},
    Entry{"gif", "image/gif"},
    Entry{"gz", "application/gzip"},
    Entry{"heic", "image/heic"},
    Entry{"htm", "text/html"},
    Entry{"html", "text/html"},
    Entry{"ics", "text/calendar"},
    Entry{"jpeg", "image/jpeg"},
    Entry{"jpg", "image/jpeg"},
    Entry{"js", "text/javascript"},
    Entry{"json", "application/json"},
    Entry{"m4a", "audio/mp4"},
    Entry{"mov", "video/quicktime"},
    Entry{"mp3", "audio/mpeg"},
    Entry{"mp4", "video/mp4"},
    Entry{"mpeg", "video/mpeg"},
    Entry{"mpg", "video/mpeg"},
    Entry{"pdf", "application/pdf"},
    Entry{"png", "image/png"},
    Entry{"ppt", "application/vnd.ms-powerpoint"},
    Entry{"pptx", "application/vnd.openxmlformats-officedocument.presentationml.presentation"},
    Entry{"rtf", "text/rtf"},
    Entry{"svg", "image/svg+xml"},
    Entry{"tar", "application/x-tar"},
    Entry{"tif", "image/tiff"},
    Entry{"tiff", "image/tiff"},
    Entry{"txt", "text/plain"},
    Entry{"wav", "audio/wav"},
    Entry{"webp", "image/webp"},
    Entry{"xls", "application/vnd.ms-excel"},
    Entry{"xlsx", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
    Entry{"xml", "application/xml"},
    Entry{"zip", "application/zip"},
};
static_assert(std::ranges::is_sorted(types, {}, &Entry::first));

constexpr char lowerCase(char character) noexcept {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

// -1, 0 or 1, as the table's text lies before, at or behind the extension in lower case.
constexpr int compare(std::string_view text, std::string_view extension) noexcept {
    for (std::size_t place = 0; place < std::min(text.size(), extension.size()); ++place) {
        const char wanted = lowerCase(extension[place]);
        if (text[place] != wanted) return text[place] < wanted ? -1 : 1;
    }
    if (text.size() == extension.size()) return 0;
    return text.size() < extension.size() ? -1 : 1;
}

} // namespace

std::string_view mimeType(std::string_view fileName) noexcept {
    constexpr std::string_view unknown = "application/octet-stream";
    const auto dot = fileName.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return unknown; // a hidden file's dot begins its name
    const auto extension = fileName.substr(dot + 1);
    const auto* const found =
        std::lower_bound(types.begin(), types.end(), extension,
                         [](const Entry& entry, std::string_view wanted) { return compare(entry.first, wanted) < 0; });
    if (found == types.end() || compare(found->first, extension) != 0) return unknown;
    return found->second;
}

} // namespace tallyfoot
