#pragma once

#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Platform/FileManager.h"
#include "Tallyfoot/Storage/AppFolder.h"
#include "Tallyfoot/Storage/ArchiveClaim.h"
#include "Tallyfoot/Storage/DatedNames.h"
#include "Tallyfoot/Storage/Turn.h"
#include "Tallyfoot/Storage/WorkFiles.h"

#include <optional>
#include <string_view>
#include <vector>

namespace tallyfoot {

// Packs the closed log files of Upload into one archive in Backup. A record never waits for the
// packing, and never longer than for a few files to be renamed:
//
//     without the turn    note the closed files; pack them under a hidden name
//     in one turn         the archive into place, if the files are still as noted
//     in short turns      the files out of Upload
//     without the turn    echo them, delete them
//
// Trimming may have taken a file meanwhile; then it starts over. When it fails and there are files that
// cannot be read, it packs the others alone: one file never holds up the rest. At every instant each record stands
// in a log or in an archive: a kill right after the archive is in place leaves both, which the next
// start reconciles. Empty log files, of which there is nothing to send, are deleted on the way.
//
// The echo of a file, while the console is on:
//
//     *******
//     07-03-2024T14-05-09-123.log
//
//     <the whole text>
//     *******
class LogPacker {
public:
    LogPacker(FileManager& fileManager, DebugConsole console, AppFolder& appFolder, const DatedNames& names);

    void pack(Turn turn);

private:
    using Logs = std::vector<AppFolder::Item>;
    enum class Outcome { packed, changed, failed };

    Logs closedLogs(Turn turn);
    bool removeUnreadable(Logs& logs) const; // true: there were some
    Outcome attempt(const Logs& logs, Turn turn);
    Result<void> pack(const Logs& logs, WorkFiles& work) const;
    bool areUnchanged(const Logs& logs) const;
    bool isUnchanged(const AppFolder::Item& log) const;
    Result<void> putInPlace(const WorkFiles& work, std::optional<ArchiveClaim>& claim) const;
    Logs::const_iterator discardSome(const Logs& logs, Logs::const_iterator next, WorkFiles& work) const;
    void echo(const Logs& logs, const WorkFiles& work) const;
    void report(std::string_view error) const;

    FileManager& fileManager_;
    DebugConsole console_;
    AppFolder& appFolder_;
    const DatedNames& names_;
};

} // namespace tallyfoot
