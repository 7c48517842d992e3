#include "Tallyfoot/Upload/MultipartRequest.h"

#include "Tallyfoot/Events/Text.h"
#include "Tallyfoot/Upload/MIMEType.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace tallyfoot {

namespace {

void appendHexadecimal(std::string& into, std::uint32_t number) {
    constexpr std::string_view digits = "0123456789abcdef";
    for (unsigned shift = 32; shift != 0; shift -= 4) into += digits[(number >> (shift - 4U)) & 0xFU];
}

struct Form {
    const std::map<std::string, std::string>& parameters;
    std::string_view boundary;
    std::string_view name;
    std::string_view filename;

    // Calls add(piece) for every text in the order in which it is written, and addData() at the
    // file's place. Measuring and writing both come here, so that the measure cannot fall short.
    template <class Add, class AddData>
    void forEachPiece(Add&& add, AddData&& addData) const {
        for (const auto& [key, value] : parameters)
            add("--", boundary, "\r\n", "Content-Disposition: form-data; name=\"", key, "\"\r\n\r\n", value, "\r\n");
        add("--", boundary, "\r\n");
        add("Content-Disposition: form-data; name=\"", name, "\"; filename=\"", filename, "\"\r\n");
        add("Content-Type: ", mimeType(filename), "\r\n\r\n");
        addData();
        add("\r\n", "--", boundary, "--");
    }
};

std::string body(const Form& form, std::string_view data) {
    std::size_t size = 0;
    form.forEachPiece([&](const auto&... pieces) { ((size += std::string_view(pieces).size()), ...); },
                      [&] { size += data.size(); });
    std::string bytes;
    bytes.reserve(size);
    form.forEachPiece([&](const auto&... pieces) { (appendString(bytes, pieces), ...); }, [&] { bytes += data; });
    return bytes;
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
                                           std::string_view boundary, std::string_view data, std::string_view name,
                                           [[maybe_unused]] std::string_view mime, std::string_view filename) {
    if (!isUploadURL(path)) return std::nullopt;
    URLRequest request;
    request.url = std::move(path);
    request.method = "POST";
    request.timeout = std::chrono::seconds(60);
    request.headers.emplace_back("Content-Type", "multipart/form-data; boundary=" + std::string(boundary));
    request.body = body({parameters, boundary, name, filename}, data);
    return request;
}

} // namespace tallyfoot
