#pragma once

#include "Tallyfoot/Platform/FileManager.h"
#include "Tallyfoot/Platform/Result.h"

#include <string>
#include <vector>

namespace tallyfoot {

// ZIP archives of log files: every entry stored, named by the bare file name, CRC-32 checked when
// it is read. Memory stays flat whatever the files' size. Any thread.
class Archive {
public:
    // Makes the archive, all of it or none; it must not exist yet. No files: nothing is done. Fails once the process
    // has begun to exit: a part of what was packed may be there twice then, or missing.
    static Result<void> pack(const std::vector<std::string>& filePaths, const std::string& archivePath);

    // Extracts every entry into a new file whose path is the prefix and the entry's name, and gives
    // the names, in the archive's order. An archive with an entry that is damaged, that another one
    // names too, that is no plain file name or that swells beyond belief fails as a whole; what was
    // extracted until then is the caller's to remove.
    static Result<std::vector<std::string>> unpack(FileManager& fileManager, const std::string& archivePath,
                                                   const std::string& pathPrefix);
};

} // namespace tallyfoot
