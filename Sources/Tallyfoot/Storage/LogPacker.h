#pragma once

#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Platform/FileManager.h"
#include "Tallyfoot/Storage/AppFolder.h"
#include "Tallyfoot/Storage/DatedNames.h"
#include "Tallyfoot/Storage/Turn.h"
#include "Tallyfoot/Storage/WorkFiles.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot {

// Packs the closed log files of Upload into one archive in Backup. A record never waits for the
// packing, and never longer than for a few files to be renamed:
//
//     without the turn    note the closed files; pack them under a hidden name
//     in short turns      take those files out of Upload, if they are still as noted
//     in one turn         the archive into place; from here on the files are in it alone
//     without the turn    echo them, delete them
//
// Trimming may have taken a file meanwhile; then all return and it starts over. A kill before the
// archive is in place leaves the logs, one right after it logs and archive, which the next start
// reconciles. Empty log files, of which there is nothing to send, are deleted on the way.
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
    Outcome attempt(const Logs& logs, Turn turn);
    Result<void> pack(const Logs& logs, WorkFiles& work) const;
    bool areUnchanged(const Logs& logs) const;
    bool isUnchanged(const AppFolder::Item& log) const;
    using Names = std::vector<std::string>;
    std::optional<Names> take(const Logs& logs, WorkFiles& work, Turn turn) const; // those that cannot be taken
    Result<void> finish(const Names& stuck, WorkFiles& work);
    void echo(const Logs& logs, const WorkFiles& work) const;
    void report(std::string_view error) const;

    FileManager& fileManager_;
    DebugConsole console_;
    AppFolder& appFolder_;
    const DatedNames& names_;
};

} // namespace tallyfoot
