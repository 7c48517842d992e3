#pragma once

#include "Tallyfoot/Platform/FileManager.h"

#include <string>
#include <string_view>

namespace tallyfoot {

// A hidden folder inside Backup for one operation's unfinished files: no listing shows it, and what
// is in it counts for nothing. It goes with everything in it when the operation ends; one that a
// killed run left goes at the next start. Only files taken out of Upload return there, unless the
// operation has come so far as to keep them.
class WorkFolder {
public:
    WorkFolder(FileManager& fileManager, std::string backup, std::string upload);
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    Result<void> create();
    std::string operator/(std::string_view name) const;

    // These hold the recorder's turn.
    Result<void> take(const std::string& name); // out of Upload
    void giveBack();                            // all that was taken
    void keep();
    std::string keptPath(std::string_view name) const;

    // Leaves alone those that an operation of this process still uses.
    static void removeAbandoned(FileManager& fileManager, const std::string& backup, const std::string& upload);

private:
    FileManager& fileManager_;
    std::string upload_;
    std::string path_;
};

} // namespace tallyfoot
