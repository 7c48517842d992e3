#pragma once

#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Platform/Posix/FileDescriptor.h"
#include "Tallyfoot/Platform/ProcessLock.h"

#include <map>
#include <memory>
#include <string>

namespace tallyfoot {

// A record lock: not a forked child's, and gone with the process however that ends. As closing any descriptor
// of the file would end it too, the process opens the file once for all that hold it.
class PosixProcessLock final : public ProcessLock {
public:
    // Null while another process has it. Where there can be no locks everybody gets one.
    static std::shared_ptr<ProcessLock> take(const std::string& path);
    ~PosixProcessLock() override;
    PosixProcessLock(const PosixProcessLock&) = delete;
    PosixProcessLock& operator=(const PosixProcessLock&) = delete;

    // Of an open file, until any descriptor of it is closed. False while another process has it.
    static bool lock(const FileDescriptor& file) noexcept;

private:
    struct File;
    using Files = std::map<std::string, std::shared_ptr<File>>; // the one that counts for each path

    PosixProcessLock() = default;
    static Exclusive<Files>& files();

    std::shared_ptr<File> file_;
};

} // namespace tallyfoot
