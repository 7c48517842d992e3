#include "Tallyfoot/Storage/ArchiveSink.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace tallyfoot {

namespace {

struct ClosingFile {
    void operator()(std::FILE* file) const noexcept { (void)std::fclose(file); }
};

using File = std::unique_ptr<std::FILE, ClosingFile>;

// Without a buffer, which a forked child that exits, or an exit of ours, would write as well. Under no number of a
// standard stream that the host has closed: what is meant for the stream would get into the archive.
File openNew(const std::filesystem::path& path) {
    std::array<File, 3> placeholders;
    for (auto& placeholder : placeholders) {
        placeholder.reset(std::fopen("/dev/null", "re"));
        if (!placeholder || ::fileno(placeholder.get()) > 2) break;
    }
    File file(std::fopen(path.c_str(), "wbxe"));
    if (file && std::setvbuf(file.get(), nullptr, _IONBF, 0) != 0) file.reset();
    return file;
}

class ArchiveSink {
public:
    explicit ArchiveSink(std::filesystem::path path) : path_(std::move(path)) { zip_error_init(&error_); }
    ~ArchiveSink() { zip_error_fini(&error_); }
    ArchiveSink(const ArchiveSink&) = delete;
    ArchiveSink& operator=(const ArchiveSink&) = delete;

    static zip_int64_t obey(void* sink, void* data, zip_uint64_t length, zip_source_cmd_t command) {
        return static_cast<ArchiveSink*>(sink)->obey(data, length, command);
    }

private:
    zip_int64_t obey(void* data, zip_uint64_t length, zip_source_cmd_t command) {
        switch (command) {
        case ZIP_SOURCE_SUPPORTS: return ZIP_SOURCE_SUPPORTS_WRITABLE;
        case ZIP_SOURCE_STAT: return failure(ZIP_ER_READ, ENOENT); // there is no archive to begin with
        case ZIP_SOURCE_BEGIN_WRITE: return begin();
        case ZIP_SOURCE_WRITE: return write(data, length);
        case ZIP_SOURCE_SEEK_WRITE: return seek(data, length);
        case ZIP_SOURCE_TELL_WRITE: return orFailure(std::ftell(file_.get()), ZIP_ER_TELL);
        case ZIP_SOURCE_COMMIT_WRITE: return commit();
        case ZIP_SOURCE_ROLLBACK_WRITE: return discard();
        case ZIP_SOURCE_ERROR: return zip_error_to_data(&error_, data, length);
        case ZIP_SOURCE_FREE: delete this; return 0;
        default: return failure(ZIP_ER_OPNOTSUPP, 0);
        }
    }

    zip_int64_t begin() {
        file_ = openNew(path_);
        if (!file_) return failure(ZIP_ER_OPEN, errno);
        constexpr auto mine = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
        std::error_code ignored;
        std::filesystem::permissions(path_, mine, ignored);
        return 0;
    }

    zip_int64_t write(const void* data, zip_uint64_t length) {
        if (std::fwrite(data, 1, length, file_.get()) != length) return failure(ZIP_ER_WRITE, errno);
        return static_cast<zip_int64_t>(length);
    }

    zip_int64_t seek(void* data, zip_uint64_t length) {
        const auto* to = ZIP_SOURCE_GET_ARGS(zip_source_args_seek_t, data, length, &error_);
        return to == nullptr ? -1 : orFailure(std::fseek(file_.get(), to->offset, to->whence), ZIP_ER_SEEK);
    }

    zip_int64_t commit() {
        if (std::fclose(file_.release()) == 0) return 0;
        const int reason = errno;
        discard();
        return failure(ZIP_ER_WRITE, reason);
    }

    zip_int64_t discard() {
        file_.reset();
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
        return 0;
    }

    zip_int64_t orFailure(zip_int64_t result, int zipError) { return result < 0 ? failure(zipError, errno) : result; }

    zip_int64_t failure(int zipError, int systemError) {
        zip_error_set(&error_, zipError, systemError);
        return -1;
    }

    const std::filesystem::path path_; // as one, so that no callback allocates: nothing may be thrown through libzip
    File file_;
    zip_error_t error_;
};

} // namespace

zip_source_t* makeArchiveSink(const std::string& path, zip_error_t& error) {
    auto sink = std::make_unique<ArchiveSink>(path);
    zip_source_t* source = zip_source_function_create(ArchiveSink::obey, sink.get(), &error);
    if (source != nullptr) (void)sink.release(); // freed with the source
    return source;
}

} // namespace tallyfoot
