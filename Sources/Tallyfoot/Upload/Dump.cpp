#include "Tallyfoot/Upload/Dump.h"

#include "Tallyfoot/Platform/DebugConsole.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace tallyfoot {

namespace {

constexpr std::size_t shownElements = 100;

std::string count(std::size_t number, std::string_view unit) {
    std::string text = std::to_string(number);
    text.append(" ").append(unit);
    if (number != 1) text += 's';
    return text;
}

void appendText(std::string& into, std::string_view name, std::string_view text) {
    into.append("  - ").append(name).append(": ").append(debugDescription(text)).append("\n");
}

void appendTexts(std::string& into, std::string_view name, const std::optional<std::vector<std::string>>& texts) {
    if (!texts) {
        into.append("  - ").append(name).append(": nil\n");
        return;
    }
    into.append(texts->empty() ? "  - " : "  ▿ ").append(name).append(": ");
    into.append(count(texts->size(), "element")).append("\n");
    for (std::size_t place = 0; place < texts->size(); ++place) {
        if (place == shownElements) {
            into.append("    (").append(std::to_string(texts->size() - place)).append(" more)\n");
            break;
        }
        into.append("    - ").append(debugDescription((*texts)[place])).append("\n");
    }
}

// The address without the "user:password@" before its host.
std::string withoutCredentials(const std::string& url) {
    const auto start = url.find("://");
    if (start == std::string::npos) return url;
    const auto authority = start + 3;
    const auto end = std::min(url.find_first_of("/?#", authority), url.size());
    const auto at = url.rfind('@', end);
    if (at == std::string::npos || at < authority || at >= end) return url;
    return url.substr(0, authority) + url.substr(at + 1);
}

} // namespace

std::string dumpText(const URLRequest& request) {
    std::string text = "▿ Tallyfoot.URLRequest\n";
    appendText(text, "url", withoutCredentials(request.url));
    appendText(text, "method", request.method);
    text.append("  - timeout: ").append(std::to_string(request.timeout.count())).append(".0\n");
    text.append(request.headers.empty() ? "  - " : "  ▿ ").append("headers: ");
    text.append(count(request.headers.size(), "element")).append("\n");
    for (const auto& [name, value] : request.headers) {
        text.append("    - ").append(debugDescription(name)).append(": ");
        text.append(name == "cookie" ? "withheld" : debugDescription(value)).append("\n");
    }
    text.append("  - body: ").append(count(request.bodySize(), "byte")).append("\n");
    return text;
}

std::string dumpText(const UploadResult& result) {
    std::string text = "▿ Tallyfoot.UploadResult\n";
    appendText(text, "statusCode", result.statusCode);
    appendText(text, "statusCodeInfo", result.statusCodeInfo);
    appendText(text, "filename", result.filename);
    appendTexts(text, "success", result.success);
    appendTexts(text, "failure", result.failure);
    return text;
}

} // namespace tallyfoot
