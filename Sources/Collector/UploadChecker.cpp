#include "Collector/UploadChecker.h"

#include "Collector/ArchiveReader.h"
#include "Collector/JSONText.h"
#include "Collector/RecordReader.h"

#include <set>

namespace tallyfoot::collector {

namespace {

void report(CheckedUpload& upload, std::string kind, std::string detail, std::string file = {}) {
    upload.problems.push_back({std::move(kind), std::move(detail), std::move(file)});
}

std::string onlyHeader(CheckedUpload& upload, std::string_view name) {
    const auto headers = upload.head.all(name);
    if (headers.size() != 1) {
        report(upload, "header", "header " + std::string(name) + (headers.empty() ? " is missing" : " comes twice"));
    }
    return headers.empty() ? std::string() : headers.front().value;
}

void checkHead(std::string_view bytes, CheckedUpload& upload) {
    upload.head = RequestHead::parse(bytes, upload.problems);
    if (upload.head.method != "POST") report(upload, "method", "the method is " + upload.head.method);
    onlyHeader(upload, "Content-Length");
    if (!upload.head.all("Transfer-Encoding").empty()) report(upload, "header", "the body comes in chunks");
    if (!upload.head.all("Expect").empty()) report(upload, "header", "an Expect header, which costs a round trip");
    if (!upload.head.all("Content-Encoding").empty()) report(upload, "header", "the body is encoded");
}

// The header is the token as it is. A token that cannot stand in a header comes without one.
void checkCookie(CheckedUpload& upload, std::string_view token) {
    const auto headers = upload.head.all("cookie");
    if (headers.size() > 1) report(upload, "cookie", "header cookie comes twice");
    for (const auto& header : headers) {
        if (header.name != "cookie") report(upload, "cookie", "header cookie is not written in lower case");
        upload.cookie = header.value;
    }
    const bool fits = token.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
    if (fits && headers.empty()) report(upload, "cookie", "header cookie is missing");
    if (!headers.empty() && (!fits || trimmedBlanks(token) != upload.cookie)) {
        report(upload, "cookie", "header cookie differs from field authtoken");
    }
}

void checkRecords(CheckedUpload& upload, CheckedFile& file) {
    if (!isUTF8(file.bytes)) report(upload, "utf8", "the log is not UTF-8", file.name);
    RecordReader reader(file.bytes);
    while (const auto piece = reader.next()) {
        if (piece->kind == LogPiece::Kind::record) {
            if (auto record = checkRecord(piece->text, file.name, upload.problems)) {
                file.records.push_back(*std::move(record));
            }
        } else {
            const bool torn = piece->kind == LogPiece::Kind::tornTail;
            report(upload, torn ? "tornTail" : "malformed",
                   std::to_string(piece->text.size()) + " bytes at offset " + std::to_string(piece->offset)
                       + (torn ? " are an unfinished record" : " are no record"),
                   file.name);
        }
    }
}

void checkEntry(CheckedUpload& upload, ArchiveEntry entry) {
    CheckedFile file{std::move(entry.name), std::move(entry.bytes), entry.error.empty(), {}};
    if (!isUTF8(file.name)) report(upload, "utf8", "the entry's name is not UTF-8", file.name);
    if (!isPlainFileName(file.name) || !file.name.ends_with(".log")) {
        report(upload, "entryName", "the entry's name is no plain name that ends in .log", file.name);
    }
    if (entry.method != 0) report(upload, "method", "the entry is not stored uncompressed", file.name);
    if (entry.encrypted) report(upload, "method", "the entry is encrypted", file.name);
    if (!file.readable) report(upload, "checksum", "the entry cannot be read: " + entry.error, file.name);
    if (file.readable && file.bytes.empty()) report(upload, "empty", "the log is empty", file.name);
    if (file.readable) checkRecords(upload, file);
    upload.files.push_back(std::move(file));
}

void checkArchive(CheckedUpload& upload, std::string_view bytes) {
    auto entries = readArchive(bytes);
    if (!entries) {
        report(upload, "archive", "the archive cannot be read: " + entries.error().description);
        return;
    }
    upload.readable = true;
    if (entries.value().empty()) report(upload, "archive", "the archive has no entries");
    std::set<std::string> names;
    for (auto& entry : entries.value()) {
        if (!names.insert(entry.name).second) report(upload, "entryName", "the entry's name comes twice", entry.name);
        checkEntry(upload, std::move(entry));
    }
}

} // namespace

CheckedUpload checkUpload(std::string_view head, std::string_view body) {
    CheckedUpload upload;
    upload.bodyBytes = body.size();
    checkHead(head, upload);
    auto content = checkMultipart(onlyHeader(upload, "Content-Type"), body, upload.problems);
    checkCookie(upload, content.field("authtoken"));
    upload.boundary = std::move(content.boundary);
    upload.filename = std::move(content.filename);
    upload.fields = std::move(content.fields);
    if (content.hasFile) checkArchive(upload, content.file);
    return upload;
}

CheckedUpload checkInterruptedUpload(std::string_view head, std::size_t bodyBytes) {
    CheckedUpload upload;
    upload.bodyBytes = bodyBytes;
    checkHead(head, upload);
    return upload;
}

} // namespace tallyfoot::collector
