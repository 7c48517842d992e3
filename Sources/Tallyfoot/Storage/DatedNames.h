#pragma once

#include "Tallyfoot/Platform/Clock.h"
#include "Tallyfoot/Platform/FileManager.h"
#include "Tallyfoot/Storage/AppFolder.h"

#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

// Names of log files and archives: the moment they are made at, in the device's time zone, such as
// "07-03-2024T14-05-09-123.log". A name is given once: what this process gave out already, or what
// stands in one of the application's folders with either extension, moves on by a millisecond, also
// when the clock is set back. Any thread.
class DatedNames {
public:
    DatedNames(FileManager& fileManager, const Clock& clock, const AppFolder& appFolder);

    std::string next(std::string_view extension) const; // with its dot

    // The moment that a name gives up to its first dot, if that is one.
    static std::optional<Date> date(std::string_view name);

private:
    bool isOnDisk(const std::string& moment, std::string_view extension) const;

    FileManager& fileManager_;
    const Clock& clock_;
    const AppFolder& appFolder_;
};

} // namespace tallyfoot
