#pragma once

#include "Tallyfoot/Facade/Configuration/ApplicationInfo.h"
#include "Tallyfoot/Facade/Configuration/Size.h"
#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Platform/FileManager.h"

#include <memory>
#include <optional>
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
// Keeps no state but the application. Its name is one path component as it is; one that is none, or
// leads elsewhere, is encoded (`pathComponent`).
// Without an application, or without an application-support directory, every operation is fatal.
// Who changes files holds the recorder's turn; reading needs none.
class AppFolder {
public:
    enum class Folder { events, upload, backup };

    struct Item {
        std::string name;
        std::optional<FileAttributes> attributes; // none: they cannot be read
    };

    AppFolder(FileManager& fileManager, DebugConsole console, std::shared_ptr<const ApplicationInfo> appInfo);

    const std::string& appName() const;
    const std::shared_ptr<const ApplicationInfo>& appInfo() const noexcept { return appInfo_; }

    void createFolders(); // the five of them, in order; failures are swallowed
    std::string path() const;
    std::string path(Folder folder) const;
    std::string path(Folder folder, std::string_view name) const;

    // Hidden files never appear. Newest first by creation date, ties by name, the greater one (the
    // later date) first. Unreadable: empty.
    std::vector<Item> items(Folder folder) const;
    std::vector<std::string> fileNames(Folder folder) const;
    std::vector<std::string> filePaths(Folder folder) const;
    std::vector<std::string> archivePaths() const;                  // ".zip" of Backup
    std::vector<std::string> nonEmptyLogPaths(Folder folder) const; // regular ".log" of at least a byte
    static bool isNonEmptyLog(const Item& item) noexcept;

    // False only when there is certainly no archive and no log file with anything in it: what cannot be
    // read may hold some. Asked before the folder is given up.
    bool mayHoldLogs() const;

    bool move(const std::string& name, Folder from, Folder to); // replaces; says why it failed
    bool remove(const std::string& path);                       // says why it failed
    void removeAll();                                           // the application's folder, silently

    float size(const std::string& path, Size unit) const; // an unreadable item counts as 0
    float totalSize(Folder folder, Size unit) const;      // of everything below; unreadable ones left out

private:
    std::string root() const;
    bool mayHoldLogs(Folder folder) const;

    FileManager& fileManager_;
    DebugConsole console_;
    std::shared_ptr<const ApplicationInfo> appInfo_;
};

} // namespace tallyfoot
