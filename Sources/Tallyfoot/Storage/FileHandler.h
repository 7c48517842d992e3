#pragma once

#include "Tallyfoot/Facade/Configuration/Settings.h"
#include "Tallyfoot/Facade/Configuration/UploadConfiguration.h"
#include "Tallyfoot/Platform/Clock.h"
#include "Tallyfoot/Platform/DebugConsole.h"
#include "Tallyfoot/Storage/AppFolder.h"
#include "Tallyfoot/Storage/DatedNames.h"
#include "Tallyfoot/Storage/RecordFile.h"
#include "Tallyfoot/Storage/StorageMonitor.h"
#include "Tallyfoot/Storage/Turn.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot {

// The log file writer of one application. A record's way:
//
//     write ─> Events/<date>.log ─ close ─> Upload/<date>.log ─ zip ─> Backup/<date>.zip
//                                                ^───────── restore ──────────┘
//
// Every call holds the recorder's turn, except where it says that it takes the turn itself. No
// failure leaves; each is one console line. Every process writes to a file of its own.
class FileHandler {
public:
    using Turn = tallyfoot::Turn;

    struct Collaborators {
        FileManager& fileManager;
        const Clock& clock;
        DebugConsole console;
        const Settings& settings;
    };

    // Creates the folders, restores archives left behind, trims the storage and, for the current
    // application, chooses and creates the current log file: the newest one in Events, else a new
    // one; a file that another process writes to, or that cannot be opened, is not ours to choose. For another
    // application, log files that a killed run left in Events move to Upload. An archive that `isInFlight` names is on
    // its way to the server and stays: its answer decides.
    FileHandler(Collaborators collaborators, std::shared_ptr<const UploadConfiguration> configuration,
                std::shared_ptr<AppFolder> appFolder, bool isCurrentApplication,
                const std::function<bool(std::string_view archiveName)>& isInFlight = {});
    ~FileHandler();

    void setTriggerUpload(std::function<void()> trigger); // called when the current file is full

    // Appends a stored record (separator included) and, at the size threshold, calls triggerUpload.
    // A record that cannot be written is lost, and that is one console line. Two system calls and
    // no allocation while the file is open.
    void write(std::string_view record);
    // The current file moves to Upload, and with it whatever an earlier failure or run left in Events and can be
    // opened; a new name is chosen, its file made by the next write.
    void close();
    void trim(); // deletes the oldest closed files down to half the budget once it is reached
    void deleteAllLogs();

    // Of several processes with this application one at a time restores, packs and sends what is closed:
    // whoever does holds this, until the server has answered. Null while another process does. Any thread.
    std::shared_ptr<ProcessLock> lockClosedFiles();

    // Packs the closed files into one archive (`LogPacker`). Takes the turn itself, in short pieces:
    // the packing between them reads closed files only. Not for two threads at once.
    void zip(Turn turn);

    // Unpacks the archive into Upload, deletes it, then deletes what was delivered
    // (`ArchiveRestorer`). Takes the turn itself, in short pieces.
    void restore(const std::string& archivePath, const std::vector<std::string>& delivered, Turn turn);
    static bool isRestoring(const std::string& archivePath); // such an archive is not to be sent; any thread

    AppFolder& appFolder() noexcept { return *appFolder_; }
    const std::optional<std::string>& currentLogFileName() const noexcept { return currentLogFileName_; }
    std::string currentFilePath() const; // fatal while there is no name
    const StorageMonitor& storageMonitor() const noexcept { return storageMonitor_; }

private:
    void restoreArchives(const std::function<bool(std::string_view)>& isInFlight);
    void chooseCurrentFile();
    bool ensureCurrentFileExists(); // says so if it could not be made
    bool openCurrentFile();
    bool isClosed(const std::string& name) const; // a file of this name
    static Result<bool> claim(RecordFile& file, const std::string& path);
    float append(std::string_view record); // the file's size afterwards
    void moveLeftovers();
    Result<void> moveUnderNewName(const std::string& leftover); // nothing is to be replaced
    void report(const Error& error) const;
    void print(std::string_view text, const std::string& path) const;

    Collaborators collaborators_;
    std::shared_ptr<const UploadConfiguration> configuration_;
    std::shared_ptr<AppFolder> appFolder_;
    std::optional<std::string> currentLogFileName_;
    RecordFile recordFile_;
    std::function<void()> triggerUpload_;
    StorageMonitor storageMonitor_;
    DatedNames names_;
};

} // namespace tallyfoot
