#include "Tallyfoot/Platform/Posix/PosixFileHandle.h"

#include "Tallyfoot/Platform/Posix/PosixProcessLock.h"
#include "Tallyfoot/Platform/Posix/SystemError.h"
#include "Tallyfoot/Platform/Posix/WriteSignals.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace tallyfoot {

namespace {

std::uint64_t roomIn(int file) {
    struct rlimit limit {};
    struct stat status {};
    if (::getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return std::numeric_limits<std::uint64_t>::max();
    const auto size = ::fstat(file, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : limit.rlim_cur;
    return limit.rlim_cur - std::min<std::uint64_t>(size, limit.rlim_cur);
}

} // namespace

PosixFileHandle::PosixFileHandle(FileDescriptor descriptor, std::string path)
    : descriptor_(std::move(descriptor)), path_(std::move(path)), room_(roomIn(descriptor_.number())) {}

Result<void> PosixFileHandle::append(std::string_view bytes) {
    if (bytes.size() <= room_) {
        auto appended = appendAll(bytes);
        if (appended) room_ -= bytes.size();
        return appended;
    }
    WriteSignals signals;
    auto appended = appendAll(bytes);
    if (!appended) signals.takeAway(SIGXFSZ);
    return appended;
}

Result<void> PosixFileHandle::appendAll(std::string_view bytes) {
    if (bytes.empty()) return {};
    const auto count = retrying([&] { return ::write(descriptor_.number(), bytes.data(), bytes.size()); });
    if (count == static_cast<ssize_t>(bytes.size())) return {};
    if (count < 0) return systemError("write", path_, errno);
    return appendRest(bytes, static_cast<std::size_t>(count));
}

// The system took only a part: the disk is full, a limit was met or a signal came.
Result<void> PosixFileHandle::appendRest(std::string_view bytes, std::size_t written) {
    WriteSignals signals;
    const int file = descriptor_.number();
    // An append leaves the offset at its own end, so that the start follows without having been kept.
    off_t end = ::lseek(file, 0, SEEK_CUR);
    const off_t start = end - static_cast<off_t>(written);
    int failure = 0;
    while (written < bytes.size()) {
        const auto rest = bytes.substr(written);
        const auto count = retrying([&] { return ::write(file, rest.data(), rest.size()); });
        if (count <= 0) {
            failure = count < 0 ? errno : ENOSPC;
            break;
        }
        written += static_cast<std::size_t>(count);
        end = ::lseek(file, 0, SEEK_CUR);
    }
    if (failure == 0) return {};
    signals.takeAway(SIGXFSZ);

    // Cut off only what is ours: if anybody else has appended meanwhile, their bytes stay.
    struct stat now {};

    const bool isOurs = start >= 0 && end == start + static_cast<off_t>(written);
    if (isOurs && ::fstat(file, &now) == 0 && now.st_size == end)
        (void)retrying([&] { return ::ftruncate(file, start); });
    return systemError("write", path_, failure);
}

Result<std::uint64_t> PosixFileHandle::size() const {
    struct stat status {};
    if (::fstat(descriptor_.number(), &status) != 0) return systemError("examine", path_, errno);
    return static_cast<std::uint64_t>(status.st_size);
}

bool PosixFileHandle::isInPlace() {
    if (watch_ && watch_->isQuiet()) return true;
    watch_.reset();
    auto place = look();
    if (place == Place::here) {
        watch_.emplace(descriptor_.number(), path_);
        place = look(); // once more: of what came before it the watch knows nothing
        if (place != Place::here) watch_.reset();
    }
    // Where we may not look at the moment nothing can be opened either: what is open is worth keeping.
    return place != Place::elsewhere;
}

PosixFileHandle::Place PosixFileHandle::look() const {
    struct stat opened {};
    struct stat found {};
    if (::fstat(descriptor_.number(), &opened) != 0) return Place::elsewhere;
    if (::stat(path_.c_str(), &found) == 0)
        return opened.st_dev == found.st_dev && opened.st_ino == found.st_ino ? Place::here : Place::elsewhere;
    return errno == ENOENT || errno == ENOTDIR || opened.st_nlink == 0 ? Place::elsewhere : Place::unknown;
}

Result<std::size_t> PosixFileHandle::read(std::uint64_t offset, std::span<char> buffer) const {
    std::size_t done = 0;
    while (done < buffer.size()) {
        const auto rest = buffer.subspan(done);
        const auto count = retrying(
            [&] { return ::pread(descriptor_.number(), rest.data(), rest.size(), static_cast<off_t>(offset + done)); });
        if (count < 0) return systemError("read", path_, errno);
        if (count == 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

Result<void> PosixFileHandle::truncate(std::uint64_t size) {
    if (retrying([&] { return ::ftruncate(descriptor_.number(), static_cast<off_t>(size)); }) != 0)
        return systemError("truncate", path_, errno);
    return {};
}

bool PosixFileHandle::lock() { return PosixProcessLock::lock(descriptor_); }

} // namespace tallyfoot
