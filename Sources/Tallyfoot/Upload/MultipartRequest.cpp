#include "Tallyfoot/Upload/MultipartRequest.h"

#include "Tallyfoot/Events/Text.h"
#include "Tallyfoot/Upload/MIMEType.h"

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

namespace tallyfoot {

namespace {

void appendHexadecimal(std::string& into, std::uint32_t number) {
    constexpr std::string_view digits = "0123456789abcdef";
    for (unsigned shift = 32; shift != 0; shift -= 4) into += digits[(number >> (shift - 4U)) & 0xFU];
}

void append(std::string& into, std::initializer_list<std::string_view> texts) {
    for (const auto text : texts) appendString(into, text);
}

std::vector<std::string> body(const std::map<std::string, std::string>& parameters, std::string_view boundary,
                              std::string data, std::string_view name, std::string_view filename) {
    std::string before;
    for (const auto& [key, value] : parameters) {
        append(before, {"--", boundary, "\r\n"});
        append(before, {"Content-Disposition: form-data; name=\"", key, "\"\r\n\r\n", value, "\r\n"});
    }
    append(before, {"--", boundary, "\r\n"});
    append(before, {"Content-Disposition: form-data; name=\"", name, "\"; filename=\"", filename, "\"\r\n"});
    append(before, {"Content-Type: ", mimeType(filename), "\r\n\r\n"});
    std::string behind;
    append(behind, {"\r\n", "--", boundary, "--"});

    std::vector<std::string> pieces;
    for (auto* const piece : {&before, &data, &behind}) pieces.push_back(std::move(*piece));
    return pieces;
}

} // namespace

std::string randomBoundary(Random& random) {
    std::string text = "tallyfoot.boundary.";
    appendHexadecimal(text, random.number());
    appendHexadecimal(text, random.number());
    return text;
}

const std::string& boundary(Random& random) {
    static const std::string& made = *new std::string(randomBoundary(random)); // outlives every upload at exit
    return made;
}

void appendString(std::string& data, std::string_view text) {
    if (text::isWellFormed(text)) data += text;
}

std::optional<URLRequest> multipartRequest(std::string path, const std::map<std::string, std::string>& parameters,
                                           std::string_view boundary, std::string data, std::string_view name,
                                           [[maybe_unused]] std::string_view mime, std::string_view filename) {
    if (!isUploadURL(path)) return std::nullopt;
    URLRequest request;
    request.url = std::move(path);
    request.method = "POST";
    request.timeout = std::chrono::seconds(60);
    request.headers.emplace_back("Content-Type", "multipart/form-data; boundary=" + std::string(boundary));
    request.body = body(parameters, boundary, std::move(data), name, filename);
    return request;
}

} // namespace tallyfoot
