#pragma once

#include "Tallyfoot/Platform/FileManager.h"

#include <string>
#include <string_view>

namespace tallyfoot {

// The unfinished files of one operation: hidden in Backup, so that no listing shows them and they
// count for nothing. They go when the operation ends; those that a killed run left go at the next
// start.
class WorkFiles {
public:
    WorkFiles(FileManager& fileManager, std::string backup);
    ~WorkFiles();
    WorkFiles(const WorkFiles&) = delete;
    WorkFiles& operator=(const WorkFiles&) = delete;

    std::string archivePath() const;
    std::string placeholderPath() const;
    std::string entryPath(std::string_view name) const;
    std::string discardedPath(std::string_view name) const;

    // Takes a file out of sight at once; it goes with the operation. Holds the recorder's turn.
    Result<void> discard(const std::string& path);

    // Whatever hides in Backup, but for what an operation of this process still uses.
    static void removeAbandoned(FileManager& fileManager, const std::string& backup);

private:
    FileManager& fileManager_;
    std::string backup_;
    std::string prefix_;
};

} // namespace tallyfoot
