#pragma once

#include "Tallyfoot/Platform/FileManager.h"
#include "Tallyfoot/Storage/AppFolder.h"
#include "Tallyfoot/Storage/DatedNames.h"

#include <memory>
#include <string>

namespace tallyfoot {

// Holds the name under which a closed log file is put into Upload, so that no other process begins to write to
// a file of that name, which would replace the closed one when it is closed itself. An empty file that is locked
// stands for the name in Events; it goes from name to name. Where none can be made no name is held.
class NameHolder {
public:
    // The empty file is made at this path, which nobody else uses and whose owner removes what is left there.
    NameHolder(FileManager& fileManager, const AppFolder& appFolder, const DatedNames& names, std::string path);
    ~NameHolder() { release(); }
    NameHolder(const NameHolder&) = delete;
    NameHolder& operator=(const NameHolder&) = delete;

    // The name that is wished for, or a new one with its extension if that is in use. Held until the next one
    // is or `release`, for both of which the recorder's turn is held.
    std::string hold(std::string wish);
    void release();

    // Takes away the empty file that a killed run held the name by, so that what the name was held for gets it
    // after all. With the turn held.
    void removeAbandoned(const std::string& name);

private:
    bool isInUse(const std::string& name); // else it is held

    FileManager& fileManager_;
    const AppFolder& appFolder_;
    const DatedNames& names_;
    const std::string restingPath_;
    std::string path_; // of the empty file
    std::unique_ptr<FileHandle> lock_;
};

} // namespace tallyfoot
