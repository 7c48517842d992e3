#pragma once

#include "Tallyfoot/Platform/FileManager.h"

#include <string>
#include <string_view>

namespace tallyfoot {

// The unfinished files of one operation: hidden in Backup, so that no listing shows them and they
// count for nothing. They go when the operation ends; those that a killed run left go at the next
// start.
//
// Files that the operation takes out of Upload return there, as long as the archive they are in is
// hidden too. Renaming the archive into place is the one step from "none of it" to "all of it".
class WorkFiles {
public:
    WorkFiles(FileManager& fileManager, std::string backup, std::string upload);
    ~WorkFiles();
    WorkFiles(const WorkFiles&) = delete;
    WorkFiles& operator=(const WorkFiles&) = delete;

    std::string archivePath() const;
    std::string entryPath(std::string_view name) const;
    std::string takenPath(std::string_view name) const;

    // These hold the recorder's turn.
    Result<void> take(const std::string& name);    // out of Upload
    Result<void> discard(const std::string& path); // of whatever file: it goes with the operation
    void giveBack();                               // all that was taken

    // Whatever hides in Backup, but for what an operation of this process still uses.
    static void removeAbandoned(FileManager& fileManager, const std::string& backup, const std::string& upload);

private:
    FileManager& fileManager_;
    std::string backup_;
    std::string upload_;
    std::string prefix_;
};

} // namespace tallyfoot
