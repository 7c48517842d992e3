#pragma once

#include "Tallyfoot/Platform/FileManager.h"

#include <mutex>

namespace tallyfoot {

// The file system of the machine. What it creates is for the user alone (0700 and 0600, less the
// process's mask). A path with a zero byte in it names nothing.
class PosixFileManager final : public FileManager {
public:
    // $XDG_DATA_HOME, else .local/share in $HOME, else in the home of the passwd entry. A variable
    // that is not an absolute path counts as unset. Found once: a host that changes its environment
    // later does not divide its logs.
    std::optional<std::string> applicationSupportDirectory() const override;

    bool fileExists(const std::string& path) const override;
    bool directoryExists(const std::string& path) const override;
    Result<FileAttributes> attributesOfItem(const std::string& path) const override;

    Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const override;
    Result<std::vector<std::string>> subpathsOfDirectory(const std::string& path) const override;

    Result<void> createDirectory(const std::string& path) override;
    Result<void> moveItem(const std::string& source, const std::string& destination) override;
    Result<void> replaceItem(const std::string& source, const std::string& destination) override;
    // Removes all that can be removed, then reports the first thing that could not.
    Result<void> removeItem(const std::string& path) override;

    // Of regular files only; a named pipe or a device is refused rather than waited for.
    Result<std::string> contents(const std::string& path) const override;
    Result<void> writeAtomically(const std::string& path, std::string_view bytes) override;
    Result<std::unique_ptr<FileHandle>> fileHandleForWriting(const std::string& path) override;
    std::shared_ptr<ProcessLock> lock(const std::string& path) override;

private:
    mutable std::once_flag supportIsFound_;
    mutable std::optional<std::string> support_;
};

} // namespace tallyfoot
