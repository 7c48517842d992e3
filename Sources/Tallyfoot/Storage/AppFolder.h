#pragma once

#include "Tallyfoot/Facade/Configuration/ApplicationInfo.h"
#include "Tallyfoot/Facade/Configuration/Size.h"
#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Platform/FileManager.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot {

// One application's folders on disk and every operation on them:
//
//     <application support>/Tallyfoot/<appName>/Events    log files being written (.log)
//                                               Upload    closed log files (.log)
//                                               Backup    archives waiting to be sent (.zip)
//
// Keeps no state but the application. Callers hold the recorder's turn.
class AppFolder {
public:
    enum class Folder { events, upload, backup };

    AppFolder(FileManager& fileManager, DebugConsole console, std::shared_ptr<const ApplicationInfo> appInfo);

    const std::string& appName() const;
    const std::shared_ptr<const ApplicationInfo>& appInfo() const noexcept { return appInfo_; }

    void createFolders(); // the five of them, in order; failures are swallowed
    std::string path() const;
    std::string path(Folder folder) const;

    // Hidden files never appear. Newest first by creation date, ties by name. Unreadable: empty.
    std::vector<std::string> fileNames(Folder folder) const;
    std::vector<std::string> filePaths(Folder folder) const;
    std::vector<std::string> archivePaths() const;                     // ".zip" of Backup
    std::vector<std::string> nonEmptyLogPaths(Folder folder) const;    // ".log" of at least a byte

    bool move(const std::string& name, Folder from, Folder to); // replaces; says why it failed
    bool remove(const std::string& path);                       // says why it failed
    void removeAll();                                           // the application's folder, silently

    float size(const std::string& path, Size unit) const;       // an unreadable item counts as 0
    float totalSize(Folder folder, Size unit) const;

private:
    // (the implementer of this room shapes what follows)
    std::shared_ptr<const ApplicationInfo> appInfo_;
};

} // namespace tallyfoot
