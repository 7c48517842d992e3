#include "MultipartParser.h"

namespace tallyfoot::testing {

namespace {

// The line without its line feed, taken off the front; nothing where no CRLF is left.
std::optional<std::string> takeLine(std::string_view& rest) {
    const auto end = rest.find("\r\n");
    if (end == std::string_view::npos) return std::nullopt;
    std::string line(rest.substr(0, end));
    rest.remove_prefix(end + 2);
    return line;
}

} // namespace

std::optional<std::string> Part::parameter(std::string_view key) const {
    const auto header = headers.find("Content-Disposition");
    if (header == headers.end()) return std::nullopt;
    const std::string opening = "; " + std::string(key) + "=\"";
    const auto start = header->second.find(opening);
    if (start == std::string::npos) return std::nullopt;
    const auto text = header->second.substr(start + opening.size());
    return text.substr(0, text.find('"'));
}

std::optional<std::vector<Part>> parseMultipart(std::string_view body, std::string_view boundary) {
    const std::string delimiter = "--" + std::string(boundary);
    std::vector<Part> parts;
    if (!body.starts_with(delimiter)) return std::nullopt;
    body.remove_prefix(delimiter.size());
    while (body != "--") {
        if (takeLine(body) != "") return std::nullopt; // the rest of the delimiter's line
        Part part;
        for (auto line = takeLine(body); line != ""; line = takeLine(body)) {
            const auto colon = line ? line->find(": ") : std::string::npos;
            if (colon == std::string::npos) return std::nullopt;
            if (!part.headers.emplace(line->substr(0, colon), line->substr(colon + 2)).second) return std::nullopt;
        }
        const auto end = body.find("\r\n" + delimiter);
        if (end == std::string_view::npos) return std::nullopt;
        part.content = body.substr(0, end);
        body.remove_prefix(end + 2 + delimiter.size());
        parts.push_back(std::move(part));
    }
    return parts;
}

} // namespace tallyfoot::testing
