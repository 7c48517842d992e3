#pragma once

#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Platform/FileManager.h"
#include "Tallyfoot/Storage/AppFolder.h"
#include "Tallyfoot/Storage/DatedNames.h"
#include "Tallyfoot/Storage/NameHolder.h"
#include "Tallyfoot/Storage/Turn.h"
#include "Tallyfoot/Storage/WorkFiles.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot {

// Brings the files of an archive back into Upload, but for those that were delivered:
//
//     without the turn    unpack the archive under hidden names
//     in short turns      the files into place; with the last of them the archive is deleted
//
// All or nothing: after a failure Upload is as it was and the archive stays. A kill leaves the
// archive, and the next start restores it again.
//
// A file that is in Upload already with the same bytes counts as restored. One of the same name with
// other bytes stays, and the restored one gets a name of its own, so that neither is lost.
class ArchiveRestorer {
public:
    ArchiveRestorer(FileManager& fileManager, DebugConsole console, AppFolder& appFolder, const DatedNames& names);

    // The delivered names come from outside: what is no plain file name is refused.
    void restore(const std::string& archivePath, const std::vector<std::string>& delivered, Turn turn);

    // Whether some thread of this process is at it.
    static bool isRestoring(const std::string& archivePath);

private:
    struct Entry {
        bool isDelivered = false;
        bool isDeleted = false;             // as delivered
        std::optional<FileAttributes> twin; // of the file in Upload that has the same name and bytes
        std::string restoredPath;           // once it is in place
    };
    using Entries = std::map<std::string, Entry>; // by name

    Result<Entries> unpack(const std::string& archivePath, WorkFiles& work) const;
    std::optional<FileAttributes> twin(const std::string& name, const WorkFiles& work) const;
    bool isTwinThere(const std::string& name, const Entry& entry) const;
    Result<void> putInPlace(const std::string& name, Entry& entry, const WorkFiles& work, NameHolder& holder);
    void takeBack(const Entries& entries);
    void finish(const std::string& archivePath, const std::vector<std::string>& delivered, Entries& entries,
                WorkFiles& work);
    void removeDelivered(const std::string& name, Entry* entry);
    void report(const Error& error) const;

    FileManager& fileManager_;
    DebugConsole console_;
    AppFolder& appFolder_;
    const DatedNames& names_;
};

} // namespace tallyfoot
