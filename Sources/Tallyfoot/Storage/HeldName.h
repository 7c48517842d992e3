#pragma once

#include "Tallyfoot/Platform/FileManager.h"
#include "Tallyfoot/Storage/AppFolder.h"
#include "Tallyfoot/Storage/DatedNames.h"

#include <memory>
#include <string>

namespace tallyfoot {

// A name under which a closed log file may be put into Upload. While it is held no other process begins to
// write to a file of that name, which would replace the closed one when it is closed itself: an empty file
// stands for it in Events, locked. Where none can be made the name is not held. Belongs to the recorder's turn.
class HeldName {
public:
    // The name that is wished for, or a new one with its extension if that is in use.
    HeldName(FileManager& fileManager, const AppFolder& appFolder, const DatedNames& names, std::string wish);
    ~HeldName();
    HeldName(const HeldName&) = delete;
    HeldName& operator=(const HeldName&) = delete;

    const std::string& name() const noexcept { return name_; }

private:
    bool isInUse(); // else it is held from now on
    void release();
    std::string pathInEvents() const { return appFolder_.path(AppFolder::Folder::events, name_); }

    FileManager& fileManager_;
    const AppFolder& appFolder_;
    std::string name_;
    std::unique_ptr<FileHandle> placeholder_;
};

} // namespace tallyfoot
