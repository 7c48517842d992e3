#include "Collector/ArchiveReader.h"

#include <zip.h>

#include <algorithm>
#include <array>
#include <memory>

namespace tallyfoot::collector {

namespace {

using Archive = std::unique_ptr<zip_t, decltype(&zip_discard)>;
using EntryFile = std::unique_ptr<zip_file_t, decltype(&zip_fclose)>;

Result<Archive> open(std::string_view bytes) {
    zip_error_t error;
    zip_error_init(&error);
    zip_t* archive = nullptr;
    if (zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error)) {
        archive = zip_open_from_source(source, ZIP_RDONLY | ZIP_CHECKCONS, &error);
        if (archive == nullptr) zip_source_free(source);
    }
    const std::string description = archive == nullptr ? zip_error_strerror(&error) : "";
    zip_error_fini(&error);
    if (archive == nullptr) return Error{description};
    return Archive(archive, &zip_discard);
}

// Reading to the very end makes the library compare the checksum.
void readBytes(zip_t* archive, zip_uint64_t index, std::size_t& room, ArchiveEntry& entry) {
    const EntryFile file(zip_fopen_index(archive, index, 0), &zip_fclose);
    if (!file) {
        entry.error = zip_strerror(archive);
        return;
    }
    std::array<char, 65536> buffer{};
    for (;;) {
        const auto count = zip_fread(file.get(), buffer.data(), buffer.size());
        if (count < 0) entry.error = zip_file_strerror(file.get());
        if (count <= 0) return;
        if (static_cast<std::size_t>(count) > room) {
            entry.error = "the archive unpacks to more than is taken";
            return;
        }
        room -= static_cast<std::size_t>(count);
        entry.bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

ArchiveEntry readEntry(zip_t* archive, zip_uint64_t index, std::size_t& room) {
    ArchiveEntry entry;
    zip_stat_t facts;
    zip_stat_init(&facts);
    if (const char* name = zip_get_name(archive, index, ZIP_FL_ENC_RAW)) entry.name = name;
    if (zip_stat_index(archive, index, 0, &facts) != 0) {
        entry.error = zip_strerror(archive);
        return entry;
    }
    if ((facts.valid & ZIP_STAT_COMP_METHOD) != 0) entry.method = facts.comp_method;
    entry.encrypted = (facts.valid & ZIP_STAT_ENCRYPTION_METHOD) != 0 && facts.encryption_method != ZIP_EM_NONE;
    readBytes(archive, index, room, entry);
    return entry;
}

} // namespace

Result<std::vector<ArchiveEntry>> readArchive(std::string_view bytes, std::size_t largestContent) {
    // The library takes nothing at all for an archive without entries.
    if (bytes.empty()) return Error{"empty"};
    auto opened = open(bytes);
    if (!opened) return opened.error();
    zip_t* archive = opened.value().get();
    std::vector<ArchiveEntry> entries;
    auto room = std::max(largestContent, bytes.size());
    const auto count = zip_get_num_entries(archive, 0);
    for (zip_int64_t index = 0; index < count; ++index) {
        entries.push_back(readEntry(archive, static_cast<zip_uint64_t>(index), room));
    }
    return entries;
}

bool isPlainFileName(std::string_view name) {
    if (name.empty() || name == "." || name == "..") return false;
    return std::all_of(name.begin(), name.end(), [](char byte) {
        return byte != '/' && byte != '\\' && static_cast<unsigned char>(byte) >= 0x20 && byte != 0x7F;
    });
}

} // namespace tallyfoot::collector
