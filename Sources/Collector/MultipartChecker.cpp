#include "Collector/MultipartChecker.h"

#include "Collector/ArchiveReader.h"
#include "Collector/JSONText.h"
#include "Collector/RecordReader.h"

#include <algorithm>
#include <array>
#include <optional>

namespace tallyfoot::collector {

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::array<std::string_view, 10> requiredFields{"appName",       "appid",        "bizarea",   "bizareaid",
                                                          "userId",        "authtoken",    "delimeter", "userAgent",
                                                          "deviceScrnDim", "userIpAddress"};

// One pass over the body. Each step says whether the next one can be taken.
class BodyReader {
public:
    BodyReader(std::string_view body, std::string_view boundary, MultipartContent& content, Problems& problems)
        : rest_(body), delimiter_("--" + std::string(boundary)), content_(content), problems_(problems) {}

    bool read() {
        if (!take(delimiter_)) return fail("the body does not begin with the delimiter");
        while (!take("--")) {
            if (!take(lineEnd)) return fail("a delimiter is followed neither by CR LF nor by two hyphens");
            if (!readPart()) return false;
        }
        if (!rest_.empty()) problem("closing", "something follows the closing delimiter");
        return true;
    }

private:
    bool take(std::string_view expected) {
        if (!rest_.starts_with(expected)) return false;
        rest_.remove_prefix(expected.size());
        return true;
    }

    void problem(std::string kind, std::string detail) {
        problems_.push_back({std::move(kind), std::move(detail), ""});
    }

    bool fail(std::string detail) {
        problem("multipart", std::move(detail));
        return false;
    }

    std::optional<std::string_view> takeThrough(std::string_view end) {
        const auto position = rest_.find(end);
        if (position == std::string_view::npos) return std::nullopt;
        const auto text = rest_.substr(0, position);
        rest_.remove_prefix(position + end.size());
        return text;
    }

    bool readPart() {
        std::vector<std::string_view> lines;
        for (;;) {
            const auto line = takeThrough(lineEnd);
            if (!line) return fail("a part's headers do not end");
            if (line->empty()) break;
            lines.push_back(*line);
        }
        const auto value = takeThrough(std::string(lineEnd) + delimiter_);
        if (!value) return fail("a part is not followed by a delimiter");
        const bool isFile = std::any_of(lines.begin(), lines.end(), [](std::string_view line) {
            return line.find("; filename=") != std::string_view::npos;
        });
        isFile ? readFile(lines, *value) : readField(lines, *value);
        return true;
    }

    void readField(const std::vector<std::string_view>& lines, std::string_view value) {
        constexpr std::string_view opening = "Content-Disposition: form-data; name=\"";
        if (content_.hasFile) problem("order", "a text field follows the file");
        if (lines.size() != 1 || !lines[0].starts_with(opening) || !lines[0].ends_with('"')
            || lines[0].size() <= opening.size()) {
            problem("field", "a text part's headers are not the one Content-Disposition line");
            return;
        }
        const auto name = lines[0].substr(opening.size(), lines[0].size() - opening.size() - 1);
        if (!isUTF8(name) || !isUTF8(value)) problem("utf8", "field " + std::string(name) + " is not UTF-8");
        content_.fields.emplace_back(name, value);
    }

    void readFile(const std::vector<std::string_view>& lines, std::string_view bytes) {
        constexpr std::string_view opening = "Content-Disposition: form-data; name=\"files\"; filename=\"";
        if (content_.hasFile) {
            problem("file", "a second file part");
            return;
        }
        content_.hasFile = true;
        content_.file = bytes;
        if (lines.size() != 2) problem("file", "the file part has not exactly two headers");
        int dispositions = 0;
        int types = 0;
        for (const auto line : lines) {
            if (line.starts_with(opening) && line.ends_with('"') && line.size() > opening.size()) {
                content_.filename = line.substr(opening.size(), line.size() - opening.size() - 1);
                ++dispositions;
            } else if (line == "Content-Type: application/zip") {
                ++types;
            } else {
                problem("file", "unexpected header of the file part: " + std::string(line));
            }
        }
        if (dispositions != 1) problem("file", "the file part has no Content-Disposition of the name \"files\"");
        if (types != 1) problem("file", "the file part's type is not application/zip");
        if (!isUTF8(content_.filename)) problem("utf8", "the file's name is not UTF-8");
        if (!isPlainFileName(content_.filename) || !content_.filename.ends_with(".zip")) {
            problem("file", "the file's name is no plain name that ends in .zip");
        }
    }

    std::string_view rest_;
    std::string delimiter_;
    MultipartContent& content_;
    Problems& problems_;
};

std::string boundaryOf(std::string_view contentType, Problems& problems) {
    constexpr std::string_view opening = "multipart/form-data; boundary=";
    constexpr std::string_view prefix = "tallyfoot.boundary.";
    if (!contentType.starts_with(opening)) {
        problems.push_back({"contentType", "Content-Type is not multipart/form-data with a boundary alone", ""});
        return {};
    }
    const auto boundary = contentType.substr(opening.size());
    const auto digits = boundary.starts_with(prefix) ? boundary.substr(prefix.size()) : std::string_view();
    if (digits.size() != 16 || digits.find_first_not_of("0123456789abcdef") != std::string_view::npos) {
        problems.push_back({"boundary", "the boundary is not tallyfoot.boundary. and 16 lower-case hex digits", ""});
    }
    return std::string(boundary);
}

void checkFields(const MultipartContent& content, Problems& problems) {
    const auto count = [&](std::string_view name) {
        return std::count_if(content.fields.begin(), content.fields.end(),
                             [&](const auto& field) { return field.first == name; });
    };
    for (const auto name : requiredFields) {
        if (count(name) == 0) problems.push_back({"field", "field " + std::string(name) + " is missing", ""});
        if (count(name) > 1) problems.push_back({"field", "field " + std::string(name) + " comes twice", ""});
    }
    for (const auto& [name, value] : content.fields) {
        if (std::find(requiredFields.begin(), requiredFields.end(), name) == requiredFields.end()) {
            problems.push_back({"field", "unknown field " + name, ""});
        }
    }
    if (content.field("delimeter") != recordSeparator) {
        problems.push_back({"field", "field delimeter does not name the record separator", ""});
    }
    if (!content.hasFile) problems.push_back({"file", "there is no file part", ""});
}

} // namespace

std::string_view MultipartContent::field(std::string_view name) const {
    const auto found =
        std::find_if(fields.begin(), fields.end(), [&](const auto& field) { return field.first == name; });
    return found == fields.end() ? std::string_view() : std::string_view(found->second);
}

MultipartContent checkMultipart(std::string_view contentType, std::string_view body, Problems& problems) {
    MultipartContent content;
    content.boundary = boundaryOf(contentType, problems);
    if (content.boundary.empty()) return content;
    content.readable = BodyReader(body, content.boundary, content, problems).read();
    checkFields(content, problems);
    return content;
}

} // namespace tallyfoot::collector
