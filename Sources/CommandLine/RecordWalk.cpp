#include "CommandLine/RecordWalk.h"

#include "Collector/ArchiveReader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace tallyfoot::commandline {

namespace {

namespace fs = std::filesystem;

std::optional<std::string> read(const fs::path& path, const RecordVisitor& visitor) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || file.bad()) {
        visitor.unreadable(path.string(), errno != 0 ? std::strerror(errno) : "cannot be read");
        return std::nullopt;
    }
    return bytes;
}

void walkLog(const std::string& name, std::string_view bytes, const RecordVisitor& visitor) {
    collector::RecordReader reader(bytes);
    while (const auto piece = reader.next()) {
        if (piece->kind == collector::LogPiece::Kind::record) {
            visitor.record(name, piece->text);
        } else {
            visitor.fragment(name, *piece);
        }
    }
}

void walkArchive(const std::string& name, std::string_view bytes, const RecordVisitor& visitor) {
    const auto entries = collector::readArchive(bytes);
    if (!entries) return visitor.unreadable(name, "no readable archive: " + entries.error().description);
    for (const auto& entry : entries.value()) {
        const auto log = name + ": " + entry.name;
        if (!entry.error.empty()) visitor.unreadable(log, entry.error);
        if (entry.error.empty()) walkLog(log, entry.bytes, visitor);
    }
}

void walkFile(const fs::path& path, const RecordVisitor& visitor) {
    const auto bytes = read(path, visitor);
    if (!bytes) return;
    if (path.extension() == ".zip") {
        walkArchive(path.string(), *bytes, visitor);
    } else {
        walkLog(path.string(), *bytes, visitor);
    }
}

bool isWanted(const fs::directory_entry& entry) {
    const auto extension = entry.path().extension();
    if ((extension != ".log" && extension != ".zip") || entry.path().filename().string().starts_with('.')) return false;
    std::error_code unknown; // a file that cannot be looked at shows when it is read
    return !entry.is_directory(unknown) && !entry.is_fifo(unknown); // a pipe would be waited for
}

bool isFolder(const fs::directory_entry& entry) {
    std::error_code unknown;
    return entry.symlink_status(unknown).type() == fs::file_type::directory;
}

void walkFolder(const fs::path& top, const RecordVisitor& visitor) {
    std::vector<fs::path> files;
    std::vector<fs::path> folders{top};
    while (!folders.empty()) {
        const auto folder = std::move(folders.back());
        folders.pop_back();
        std::error_code failure;
        for (fs::directory_iterator entry(folder, failure); !failure && entry != fs::directory_iterator();
             entry.increment(failure)) {
            if (isFolder(*entry)) {
                folders.push_back(entry->path());
            } else if (isWanted(*entry)) {
                files.push_back(entry->path());
            }
        }
        if (failure) visitor.unreadable(folder.string(), failure.message());
    }
    std::sort(files.begin(), files.end());
    for (const auto& file : files) walkFile(file, visitor);
}

} // namespace

void walkRecords(const fs::path& path, const RecordVisitor& visitor) {
    std::error_code failure;
    if (fs::is_directory(path, failure)) return walkFolder(path, visitor);
    walkFile(path, visitor);
}

} // namespace tallyfoot::commandline
