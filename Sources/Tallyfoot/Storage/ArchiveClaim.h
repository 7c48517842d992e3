#pragma once

#include <string>

namespace tallyfoot {

// Says that one operation of this process is at work on an archive, so that no other begins on it:
// an archive that is half restored, or whose logs have not all left Upload yet. Any thread.
class ArchiveClaim {
public:
    explicit ArchiveClaim(std::string archivePath);
    ~ArchiveClaim();
    ArchiveClaim(const ArchiveClaim&) = delete;
    ArchiveClaim& operator=(const ArchiveClaim&) = delete;

    explicit operator bool() const noexcept { return isOurs_; } // false when another one holds it

    static bool isHeld(const std::string& archivePath);

private:
    const std::string path_;
    const bool isOurs_;
};

} // namespace tallyfoot
