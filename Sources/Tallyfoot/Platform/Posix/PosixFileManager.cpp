#include "Tallyfoot/Platform/Posix/PosixFileManager.h"

#include "Tallyfoot/Platform/Posix/FileDescriptor.h"
#include "Tallyfoot/Platform/Posix/HomeFolder.h"
#include "Tallyfoot/Platform/Posix/PosixFileHandle.h"
#include "Tallyfoot/Platform/Posix/PosixProcessLock.h"
#include "Tallyfoot/Platform/Posix/SystemError.h"
#include "Tallyfoot/Platform/Posix/WriteSignals.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <new>

namespace tallyfoot {

namespace {

constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;

bool isPath(const std::string& path) { return path.find('\0') == path.npos; }

std::string joined(const std::string& folder, const std::string& name) {
    if (folder.empty()) return name;
    return folder.back() == '/' ? folder + name : folder + '/' + name;
}

// The folder of the last component, with its slash; empty for a bare name.
std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == path.npos ? std::string() : path.substr(0, slash + 1);
}

FileDescriptor openFile(const std::string& path, int flags, mode_t mode = 0) {
    if (!isPath(path)) {
        errno = EINVAL;
        return {};
    }
    return FileDescriptor(retrying([&] { return ::open(path.c_str(), flags | O_CLOEXEC, mode); }));
}

// Opening with O_NONBLOCK keeps a named pipe from holding the caller; it changes nothing for files.
FileDescriptor openRegularFile(const std::string& path, int flags) {
    auto file = openFile(path, flags | O_NONBLOCK);
    if (!file) return file;

    struct stat status {};

    if (::fstat(file.number(), &status) != 0) return {};
    if (S_ISREG(status.st_mode)) return file;
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    return {};
}

std::optional<mode_t> kindOf(const std::string& path, int flags) {
    struct statx status {};

    if (!isPath(path) || ::statx(AT_FDCWD, path.c_str(), flags, STATX_TYPE, &status) != 0) return std::nullopt;
    return status.stx_mode & S_IFMT;
}

struct FolderEntry {
    std::string name;
    bool isFolder; // a link to one is none
};

class Folder {
public:
    explicit Folder(const std::string& path, int flags = 0) {
        auto file = openFile(path, O_RDONLY | O_DIRECTORY | flags);
        if (!file) return;
        stream_ = ::fdopendir(file.number());
        if (stream_ != nullptr) (void)file.release();
    }

    ~Folder() {
        if (stream_ != nullptr) ::closedir(stream_);
    }

    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    explicit operator bool() const { return stream_ != nullptr; }

    // Nothing at the end or after a failure, which is then in errno; 0 means the end.
    std::optional<FolderEntry> next() {
        for (;;) {
            errno = 0;
            const dirent* entry = ::readdir(stream_);
            if (entry == nullptr) return std::nullopt;
            std::string name = entry->d_name;
            if (name == "." || name == "..") continue;
            return FolderEntry{std::move(name), isFolder(*entry)};
        }
    }

private:
    bool isFolder(const dirent& entry) const {
        if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;

        struct stat status {};

        return ::fstatat(::dirfd(stream_), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
    }

    DIR* stream_ = nullptr;
};

Result<std::vector<FolderEntry>> entriesOf(const std::string& path, int flags = 0) {
    Folder folder(path, flags);
    if (!folder) return systemError("read folder", path, errno);
    std::vector<FolderEntry> entries;
    while (auto entry = folder.next()) entries.push_back(std::move(*entry));
    if (errno != 0) return systemError("read folder", path, errno);
    return entries;
}

// For file systems that know no rename without replacement.
int moveInSteps(const char* source, const char* destination) {
    if (::link(source, destination) == 0) return ::unlink(source); // a file: still in one step
    if (errno == EEXIST) return -1;

    struct stat status {};

    if (::lstat(destination, &status) == 0) {
        errno = EEXIST;
        return -1;
    }
    return ::rename(source, destination);
}

// Replaces nothing.
int moveWithoutReplacing(const char* source, const char* destination) {
    const int result = ::renameat2(AT_FDCWD, source, AT_FDCWD, destination, RENAME_NOREPLACE);
    if (result == 0 || (errno != EINVAL && errno != ENOSYS)) return result;
    return moveInSteps(source, destination);
}

bool writeAll(int file, std::string_view bytes) {
    WriteSignals signals;
    while (!bytes.empty()) {
        const auto count = retrying([&] { return ::write(file, bytes.data(), bytes.size()); });
        if (count == 0) errno = ENOSPC;
        if (count <= 0) {
            signals.takeAway(SIGXFSZ);
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

// A hidden name that no other thread or process uses at this time.
std::string temporaryName() {
    static std::atomic<unsigned> counter{0};
    return ".tallyfoot-" + std::to_string(::getpid()) + "-" + std::to_string(counter.fetch_add(1)) + ".tmp";
}

// Removes a folder's entries and the folder, deepest first, by a list instead of recursion. A folder
// in which something had to stay is met a second time and then given up.
class Removal {
public:
    Result<void> remove(const std::string& root) {
        pending_.push_back({root, false});
        while (!pending_.empty()) {
            auto step = std::move(pending_.back());
            pending_.pop_back();
            if (step.wasEmptied)
                check(::rmdir(step.path.c_str()), step.path);
            else
                enter(step.path);
        }
        return std::move(outcome_);
    }

private:
    struct Step {
        std::string path;
        bool wasEmptied;
    };

    void enter(const std::string& path) {
        auto entries = entriesOf(path, O_NOFOLLOW);
        pending_.push_back({path, true});
        if (!entries) {
            if (::rmdir(path.c_str()) == 0)
                pending_.pop_back(); // it was empty, so that not being allowed to read it does no harm
            else
                keep(entries.error());
            return;
        }
        for (auto& entry : entries.value()) {
            auto child = joined(path, entry.name);
            if (entry.isFolder)
                pending_.push_back({std::move(child), false});
            else
                check(::unlink(child.c_str()), child);
        }
    }

    void check(int result, const std::string& path) {
        if (result != 0 && errno != ENOENT) keep(systemError("remove", path, errno));
    }

    void keep(Error error) {
        if (outcome_) outcome_ = std::move(error);
    }

    std::vector<Step> pending_;
    Result<void> outcome_;
};

} // namespace

std::optional<std::string> PosixFileManager::applicationSupportDirectory() const {
    std::call_once(supportIsFound_, [this] {
        support_ = pathVariable("XDG_DATA_HOME");
        if (support_) return;
        if (const auto home = homeFolder()) support_ = joined(*home, ".local/share");
    });
    return support_;
}

bool PosixFileManager::fileExists(const std::string& path) const {
    return kindOf(path, AT_SYMLINK_NOFOLLOW).has_value();
}

bool PosixFileManager::directoryExists(const std::string& path) const { return kindOf(path, 0) == S_IFDIR; }

Result<FileAttributes> PosixFileManager::attributesOfItem(const std::string& path) const {
    struct statx status {};

    constexpr unsigned wanted = STATX_TYPE | STATX_SIZE | STATX_BTIME | STATX_MTIME;
    if (!isPath(path)) return systemError("examine", path, EINVAL);
    if (::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, wanted, &status) != 0)
        return systemError("examine", path, errno);
    const auto& time = (status.stx_mask & STATX_BTIME) != 0 ? status.stx_btime : status.stx_mtime;
    const Date date(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
    return FileAttributes{status.stx_size, date, S_ISREG(status.stx_mode)};
}

Result<std::vector<std::string>> PosixFileManager::contentsOfDirectory(const std::string& path) const {
    auto entries = entriesOf(path);
    if (!entries) return entries.error();
    std::vector<std::string> names;
    names.reserve(entries.value().size());
    for (auto& entry : entries.value()) names.push_back(std::move(entry.name));
    return names;
}

Result<std::vector<std::string>> PosixFileManager::subpathsOfDirectory(const std::string& path) const {
    std::vector<std::string> subpaths;
    std::vector<std::string> folders{""}; // still to be entered, relative to the root
    while (!folders.empty()) {
        const auto folder = std::move(folders.back());
        folders.pop_back();
        const bool isRoot = folder.empty();
        auto entries = entriesOf(isRoot ? path : joined(path, folder), isRoot ? 0 : O_NOFOLLOW);
        if (!entries && isRoot) return entries.error();
        if (!entries) continue;
        for (const auto& entry : entries.value()) {
            subpaths.push_back(joined(folder, entry.name));
            if (entry.isFolder) folders.push_back(subpaths.back());
        }
    }
    return subpaths;
}

Result<void> PosixFileManager::createDirectory(const std::string& path) {
    if (!isPath(path)) return systemError("create folder", path, EINVAL);
    if (::mkdir(path.c_str(), folderMode) == 0) return {};
    int failure = errno;
    if (failure == ENOENT) { // a parent is missing: make them from the top
        for (auto slash = path.find('/', 1); slash != path.npos; slash = path.find('/', slash + 1))
            (void)::mkdir(path.substr(0, slash).c_str(), folderMode);
        if (::mkdir(path.c_str(), folderMode) == 0) return {};
        failure = errno;
    }
    if (directoryExists(path)) return {};
    return systemError("create folder", path, failure);
}

Result<void> PosixFileManager::moveItem(const std::string& source, const std::string& destination) {
    if (!isPath(source) || !isPath(destination)) return systemError("move", source, EINVAL);
    if (moveWithoutReplacing(source.c_str(), destination.c_str()) != 0) return systemError("move", source, errno);
    return {};
}

Result<void> PosixFileManager::replaceItem(const std::string& source, const std::string& destination) {
    if (!isPath(source) || !isPath(destination)) return systemError("move", source, EINVAL);
    if (::rename(source.c_str(), destination.c_str()) != 0) return systemError("move", source, errno);
    return {};
}

Result<void> PosixFileManager::removeItem(const std::string& path) {
    if (!isPath(path)) return systemError("remove", path, EINVAL);
    if (::unlink(path.c_str()) == 0) return {};
    const int failure = errno;
    if (kindOf(path, AT_SYMLINK_NOFOLLOW) != S_IFDIR) return systemError("remove", path, failure);
    return Removal().remove(path);
}

Result<std::string> PosixFileManager::contents(const std::string& path) const try {
    const auto file = openRegularFile(path, O_RDONLY);
    if (!file) return systemError("open", path, errno);

    struct stat status {};

    if (::fstat(file.number(), &status) != 0) return systemError("read", path, errno);

    // One byte more than the file has shows its end without another round.
    std::string bytes(static_cast<std::size_t>(status.st_size) + 1, '\0');
    std::size_t done = 0;
    for (;;) {
        const auto count = retrying([&] { return ::read(file.number(), bytes.data() + done, bytes.size() - done); });
        if (count < 0) return systemError("read", path, errno);
        if (count == 0) break;
        done += static_cast<std::size_t>(count);
        if (done == bytes.size()) bytes.resize(bytes.size() * 2);
    }
    bytes.resize(done);
    return bytes;

} catch (const std::exception&) { // larger than the memory that is left

    return systemError("read", path, ENOMEM);
}

Result<void> PosixFileManager::writeAtomically(const std::string& path, std::string_view bytes) {
    if (!isPath(path)) return systemError("write", path, EINVAL);
    if (bytes.empty()) { // whole as soon as it is there, and nothing beside it for a kill to leave
        if (!openFile(path, O_WRONLY | O_CREAT | O_EXCL, fileMode)) return systemError("create", path, errno);
        return {};
    }
    std::string temporary;
    FileDescriptor file;
    do { // a name may be left over from a process that died with our number
        temporary = folderOf(path) + temporaryName();
        file = openFile(temporary, O_WRONLY | O_CREAT | O_EXCL, fileMode);
    } while (!file && errno == EEXIST);
    if (!file) return systemError("create", path, errno);

    // Rename last: whoever dies before it leaves a hidden file that nobody reads.
    if (writeAll(file.number(), bytes) && moveWithoutReplacing(temporary.c_str(), path.c_str()) == 0) return {};
    const int failure = errno;
    (void)::unlink(temporary.c_str());
    return systemError("write", path, failure);
}

Result<std::unique_ptr<FileHandle>> PosixFileManager::fileHandleForWriting(const std::string& path) {
    auto file = openRegularFile(path, O_RDWR | O_APPEND);
    if (!file) return systemError("open", path, errno);
    return std::unique_ptr<FileHandle>(std::make_unique<PosixFileHandle>(std::move(file), path));
}

std::shared_ptr<ProcessLock> PosixFileManager::lock(const std::string& path) { return PosixProcessLock::take(path); }

} // namespace tallyfoot
