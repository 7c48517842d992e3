#include "Tallyfoot/Storage/Archive.h"

#include "Tallyfoot/Platform/FileSizeLimit.h"
#include "Tallyfoot/Platform/ProcessEnd.h"
#include "Tallyfoot/Storage/ArchiveSink.h"
#include "Tallyfoot/Storage/PathNames.h"

#include <zip.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <set>
#include <string_view>
#include <utility>

namespace tallyfoot {

namespace {

// Our own entries are stored and never swell at all; log text in any compression stays below this.
std::uint64_t greatestContent(std::uint64_t archiveSize) {
    constexpr std::uint64_t swelling = 100;
    constexpr std::uint64_t unsuspicious = 16U << 20U;
    return std::max(archiveSize * swelling, unsuspicious);
}

struct Discarding {
    void operator()(zip_t* archive) const noexcept { zip_discard(archive); }
};
using Zip = std::unique_ptr<zip_t, Discarding>;

struct Closing {
    void operator()(zip_file_t* file) const noexcept { (void)zip_fclose(file); }
};
using Entry = std::unique_ptr<zip_file_t, Closing>;

Error failure(zip_t* archive) { return {zip_strerror(archive)}; }

Error failure(zip_error_t& error) {
    Error description{zip_error_strerror(&error)};
    zip_error_fini(&error);
    return description;
}

Result<Zip> open(const std::string& path) {
    int code = 0;
    if (Zip archive{zip_open(path.c_str(), ZIP_RDONLY, &code)}) return archive;
    zip_error_t error;
    zip_error_init_with_code(&error, code);
    return failure(error);
}

Result<Zip> create(const std::string& path) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* sink = makeArchiveSink(path, error);
    if (sink == nullptr) return failure(error);
    if (Zip archive{zip_open_from_source(sink, ZIP_CREATE | ZIP_EXCL, &error)}) return archive;
    zip_source_free(sink);
    return failure(error);
}

Result<void> add(zip_t* archive, const std::string& path) {
    zip_source_t* source = zip_source_file(archive, path.c_str(), 0, -1);
    if (source == nullptr) return failure(archive);
    const std::string name(lastPathComponent(path));
    const auto index = zip_file_add(archive, name.c_str(), source, ZIP_FL_ENC_GUESS);
    if (index < 0) {
        zip_source_free(source);
        return failure(archive);
    }
    if (zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_STORE, 0) != 0)
        return failure(archive);
    return {};
}

Result<void> packInto(const std::string& archivePath, const std::vector<std::string>& filePaths) {
    auto archive = create(archivePath);
    if (!archive) return archive.error();
    for (const auto& path : filePaths) {
        if (auto added = add(archive.value().get(), path); !added) return added;
    }
    // All reading and writing happens here.
    if (zip_close(archive.value().get()) != 0) return failure(archive.value().get());
    (void)archive.value().release();
    return {};
}

// What the directory says of the entries, before a byte of them is believed.
Result<std::vector<zip_stat_t>> readDirectory(zip_t* archive, std::uint64_t archiveSize) {
    std::vector<zip_stat_t> entries;
    std::set<std::string_view> names;
    std::uint64_t total = 0;
    const auto count = zip_get_num_entries(archive, 0);
    for (zip_int64_t index = 0; index < count; ++index) {
        zip_stat_t entry;
        if (zip_stat_index(archive, static_cast<zip_uint64_t>(index), ZIP_FL_ENC_RAW, &entry) != 0)
            return failure(archive);
        constexpr zip_uint64_t needed = ZIP_STAT_NAME | ZIP_STAT_SIZE;
        if ((entry.valid & needed) != needed || !isPlainFileName(entry.name))
            return Error{"an entry's name is no file name"};
        if (!names.insert(entry.name).second) return Error{"two entries have one name"};
        if (entry.size > greatestContent(archiveSize) - total) return Error{"the entries are too large to be true"};
        total += entry.size;
        entries.push_back(entry);
    }
    return entries;
}

Result<void> extract(FileManager& fileManager, zip_t* archive, const zip_stat_t& entry, const std::string& path) {
    const Entry file{zip_fopen_index(archive, entry.index, 0)};
    if (!file) return failure(archive);
    if (auto created = fileManager.writeAtomically(path, {}); !created) return created;
    auto handle = fileManager.fileHandleForWriting(path);
    if (!handle) return handle.error();
    std::array<char, 65536> block;
    std::uint64_t total = 0;
    while (true) {
        // The CRC-32 is compared by the read that meets the end.
        const auto count = zip_fread(file.get(), block.data(), block.size());
        if (count < 0) return Error{zip_file_strerror(file.get())};
        if (count == 0) break;
        total += static_cast<std::uint64_t>(count);
        if (total > entry.size) return Error{"an entry is larger than it says"};
        if (auto written = handle.value()->append({block.data(), static_cast<std::size_t>(count)}); !written)
            return written;
    }
    if (total != entry.size) return Error{"an entry is shorter than it says"};
    return {};
}

} // namespace

Result<void> Archive::pack(const std::vector<std::string>& filePaths, const std::string& archivePath) {
    if (filePaths.empty()) return {};
    auto packed = withinFileSizeLimit([&] { return packInto(archivePath, filePaths); });
    if (packed && ProcessEnd::hasBegun()) return Error{"the process is ending"}; // libzip and we use streams
    return packed;
}

Result<std::vector<std::string>> Archive::unpack(FileManager& fileManager, const std::string& archivePath,
                                                 const std::string& pathPrefix) {
    const auto attributes = fileManager.attributesOfItem(archivePath);
    if (!attributes) return attributes.error();
    auto archive = open(archivePath);
    if (!archive) return archive.error();
    const auto entries = readDirectory(archive.value().get(), attributes.value().size);
    if (!entries) return entries.error();
    std::vector<std::string> names;
    names.reserve(entries.value().size());
    for (const auto& entry : entries.value()) {
        auto extracted = extract(fileManager, archive.value().get(), entry, pathPrefix + entry.name);
        if (!extracted) return extracted.error();
        names.emplace_back(entry.name);
    }
    return names;
}

} // namespace tallyfoot
