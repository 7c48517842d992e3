#pragma once

#include "Tallyfoot/Platform/Clock.h"
#include "Tallyfoot/Platform/FileHandle.h"
#include "Tallyfoot/Platform/ProcessLock.h"
#include "Tallyfoot/Platform/Result.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot {

struct FileAttributes {
    std::uint64_t size;
    Date creationDate; // birth time where the file system keeps one, else the modification time
    bool isRegular;    // a file, and no folder, link or pipe
};

// Files by path, UTF-8. Every call goes to the file system afresh. Any thread. Apple: NSFileManager.
class FileManager {
public:
    virtual ~FileManager() = default;

    // The user's application-support directory, the same at every call; nothing when there is none.
    virtual std::optional<std::string> applicationSupportDirectory() const = 0;

    virtual bool fileExists(const std::string& path) const = 0; // of any kind
    virtual bool directoryExists(const std::string& path) const = 0;
    virtual Result<FileAttributes> attributesOfItem(const std::string& path) const = 0; // a link is not followed

    // Names, hidden ones included, without "." and "..", in no particular order.
    virtual Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const = 0;
    // Everything below, relative to the folder. What cannot be entered is left out; links are not followed.
    virtual Result<std::vector<std::string>> subpathsOfDirectory(const std::string& path) const = 0;

    virtual Result<void> createDirectory(const std::string& path) = 0; // with its parents; an existing one is fine
    virtual Result<void> moveItem(const std::string& source, const std::string& destination) = 0;    // replaces nothing
    virtual Result<void> replaceItem(const std::string& source, const std::string& destination) = 0; // one rename
    virtual Result<void> removeItem(const std::string& path) = 0; // a folder goes with everything in it

    virtual Result<std::string> contents(const std::string& path) const = 0;
    // Written beside under a hidden name, then renamed, unless it is empty: readers see nothing or the whole file.
    // Replaces nothing.
    virtual Result<void> writeAtomically(const std::string& path, std::string_view bytes) = 0;
    // Opens an existing file for appending; it is not created.
    virtual Result<std::unique_ptr<FileHandle>> fileHandleForWriting(const std::string& path) = 0;

    // This process's lock on what the file stands for, which is made if need be. Null while another process
    // has it. Where there can be no locks everybody gets one.
    virtual std::shared_ptr<ProcessLock> lock(const std::string& path) = 0;
};

} // namespace tallyfoot
