#include "Collector/RequestHead.h"

#include <algorithm>
#include <cctype>

namespace tallyfoot::collector {

namespace {

bool sameName(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    });
}

bool isToken(std::string_view name) {
    static constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char byte) {
        return std::isalnum(static_cast<unsigned char>(byte)) != 0 || marks.find(byte) != std::string_view::npos;
    });
}

bool hasControl(std::string_view value) {
    return std::any_of(value.begin(), value.end(), [](char byte) {
        const auto code = static_cast<unsigned char>(byte);
        return (code < 0x20 && byte != '\t') || code == 0x7F;
    });
}

std::string_view takeLine(std::string_view& rest, Problems& problems) {
    const auto end = rest.find('\n');
    auto line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    } else {
        problems.push_back({"head", "a header line does not end in CR LF", ""});
    }
    return line;
}

void parseRequestLine(std::string_view line, RequestHead& head, Problems& problems) {
    const auto first = line.find(' ');
    const auto last = line.rfind(' ');
    if (first == std::string_view::npos || first == last) {
        problems.push_back({"head", "the request line has not three parts", ""});
        return;
    }
    head.method = line.substr(0, first);
    head.target = line.substr(first + 1, last - first - 1);
    head.version = line.substr(last + 1);
    if (head.target.empty() || head.target.find(' ') != std::string::npos) {
        problems.push_back({"head", "the request target is empty or holds a blank", ""});
    }
}

void parseHeader(std::string_view line, RequestHead& head, Problems& problems) {
    const auto colon = line.find(':');
    if (colon == std::string_view::npos || !isToken(line.substr(0, colon))) {
        problems.push_back({"head", "a header line has no valid name", ""});
        return;
    }
    const auto value = trimmedBlanks(line.substr(colon + 1));
    if (hasControl(value)) problems.push_back({"head", "a header value holds a control character", ""});
    head.headers.push_back({std::string(line.substr(0, colon)), std::string(value)});
}

} // namespace

std::string_view trimmedBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

RequestHead RequestHead::parse(std::string_view bytes, Problems& problems) {
    RequestHead head;
    parseRequestLine(takeLine(bytes, problems), head, problems);
    while (!bytes.empty()) {
        const auto line = takeLine(bytes, problems);
        if (line.empty()) break;
        parseHeader(line, head, problems);
    }
    return head;
}

std::vector<RequestHead::Header> RequestHead::all(std::string_view name) const {
    std::vector<Header> found;
    std::copy_if(headers.begin(), headers.end(), std::back_inserter(found),
                 [&](const Header& header) { return sameName(header.name, name); });
    return found;
}

} // namespace tallyfoot::collector
