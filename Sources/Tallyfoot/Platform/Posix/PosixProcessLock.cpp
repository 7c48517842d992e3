#include "Tallyfoot/Platform/Posix/PosixProcessLock.h"

#include "Tallyfoot/Platform/Posix/SystemError.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <utility>

namespace tallyfoot {

struct PosixProcessLock::File {
    std::string path;
    FileDescriptor descriptor;
    int holders = 0; // changes inside `files().modify` only, and with it whether the file is open

    bool isAtItsPath() const {
        struct stat opened {};
        struct stat found {};
        return descriptor && ::fstat(descriptor.number(), &opened) == 0 && ::stat(path.c_str(), &found) == 0
               && opened.st_dev == found.st_dev && opened.st_ino == found.st_ino;
    }
};

Exclusive<PosixProcessLock::Files>& PosixProcessLock::files() {
    static auto& files = *new Exclusive<Files>; // never released: a lock may go while the process ends
    return files;
}

bool PosixProcessLock::lock(const FileDescriptor& file) noexcept {
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    return retrying([&] { return ::fcntl(file.number(), F_SETLK, &whole); }) == 0
           || (errno != EACCES && errno != EAGAIN);
}

std::shared_ptr<ProcessLock> PosixProcessLock::take(const std::string& path) {
    const std::shared_ptr<PosixProcessLock> taken(new PosixProcessLock);
    // The system calls below wait for nobody.
    return files().modify([&](Files& files) -> std::shared_ptr<ProcessLock> {
        auto& current = files[path];
        if (!current || !current->isAtItsPath()) {
            auto file = std::make_shared<File>();
            file->path = path;
            file->descriptor =
                FileDescriptor(retrying([&] { return ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600); }));
            if (file->descriptor && !lock(file->descriptor)) return nullptr;
            current = std::move(file);
        }
        taken->file_ = current;
        ++current->holders;
        return taken;
    });
}

PosixProcessLock::~PosixProcessLock() {
    if (!file_) return;
    files().modify([&](Files& files) {
        if (--file_->holders > 0) return;
        file_->descriptor = FileDescriptor(); // in here: closed later, it would end a lock taken meanwhile
        if (const auto current = files.find(file_->path); current != files.end() && current->second == file_)
            files.erase(current);
    });
}

} // namespace tallyfoot
