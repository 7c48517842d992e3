#include "Tallyfoot/Storage/FileHandler.h"

#include "Tallyfoot/Platform/FatalError.h"
#include "Tallyfoot/Platform/ProcessEnd.h"
#include "Tallyfoot/Storage/ArchiveRestorer.h"
#include "Tallyfoot/Storage/LogPacker.h"
#include "Tallyfoot/Storage/NameHolder.h"
#include "Tallyfoot/Storage/PathNames.h"
#include "Tallyfoot/Storage/WorkFiles.h"

#include <algorithm>
#include <utility>

namespace tallyfoot {

using Folder = AppFolder::Folder;

FileHandler::FileHandler(Collaborators collaborators, std::shared_ptr<const UploadConfiguration> configuration,
                         std::shared_ptr<AppFolder> appFolder, bool isCurrentApplication,
                         const std::function<bool(std::string_view archiveName)>& isInFlight)
    : collaborators_(collaborators), configuration_(std::move(configuration)), appFolder_(std::move(appFolder)),
      recordFile_(collaborators_.fileManager), storageMonitor_{.thresholdFileSize =
                                                                   configuration_->fileSize().inBytes(),
                                                               .thresholdStorageSize =
                                                                   configuration_->storageSize().inBytes()},
      names_(collaborators_.fileManager, collaborators_.clock, *appFolder_) {
    ProcessEnd::watch();
    appFolder_->createFolders();
    if (const auto lock = lockClosedFiles()) {
        WorkFiles::removeAbandoned(collaborators_.fileManager, appFolder_->path(Folder::backup));
        restoreArchives(isInFlight);
    }
    trim();
    if (isCurrentApplication) {
        chooseCurrentFile();
    } else {
        moveLeftovers();
    }
}

FileHandler::~FileHandler() = default;

void FileHandler::restoreArchives(const std::function<bool(std::string_view)>& isInFlight) {
    for (const auto& path : appFolder_->archivePaths()) {
        if (isRestoring(path) || (isInFlight && isInFlight(lastPathComponent(path)))) continue;
        restore(path, {}, [](FunctionRef<void()> block) { block(); });
    }
}

void FileHandler::chooseCurrentFile() {
    const auto items = appFolder_->items(Folder::events);
    const auto newest = std::find_if(items.begin(), items.end(), [this](const AppFolder::Item& item) {
        if (!item.name.ends_with(".log") || (item.attributes && !item.attributes->isRegular)) return false;
        RecordFile file(collaborators_.fileManager);
        const auto isOurs = claim(file, appFolder_->path(Folder::events, item.name));
        return isOurs && isOurs.value();
    });
    currentLogFileName_ = newest == items.end() ? names_.next(".log") : newest->name;
    collaborators_.console.print({"Current log filename: ", *currentLogFileName_});
    print("Current log filepath: ", currentFilePath());
    (void)ensureCurrentFileExists();
}

void FileHandler::setTriggerUpload(std::function<void()> trigger) { triggerUpload_ = std::move(trigger); }

std::string FileHandler::currentFilePath() const {
    if (!currentLogFileName_) fatalError("The current log file was asked for before it has a name");
    return appFolder_->path(Folder::events, *currentLogFileName_);
}

bool FileHandler::ensureCurrentFileExists() {
    auto& fileManager = collaborators_.fileManager;
    if (fileManager.fileExists(currentFilePath())) return true;
    // An archive that came back meanwhile may have brought a closed file of this name.
    if (isClosed(*currentLogFileName_)) currentLogFileName_ = names_.next(".log");
    const auto path = currentFilePath();
    trim();
    Result<void> created;
    const auto make = [&] {
        created = fileManager.writeAtomically(path, {});
        // A process that was quicker may even have closed it by now.
        return created || fileManager.fileExists(path) || isClosed(*currentLogFileName_);
    };
    bool isThere = make();
    if (!isThere) {
        appFolder_->createFolders(); // somebody took them away
        isThere = make();
    }
    if (created || !isThere) print(created ? "File created at path: " : "Filed to create log file at: ", path);
    return isThere;
}

void FileHandler::write(std::string_view record) {
    const auto size = append(record);
    const bool isFull = storageMonitor_.thresholdFileSize <= size;
    if (!isFull && !collaborators_.settings.ignoreFileSizeThreshold) return;
    if (const auto trigger = triggerUpload_) trigger(); // a copy: it may set another one
}

bool FileHandler::isClosed(const std::string& name) const {
    return collaborators_.fileManager.fileExists(appFolder_->path(Folder::upload, name));
}

bool FileHandler::openCurrentFile() {
    constexpr int attempts = 64; // each may lose a name to one more process
    Error failure{"the log file keeps changing"};
    for (int count = 0; count < attempts; ++count) {
        if (!ensureCurrentFileExists()) return false; // which said so
        const auto opened = recordFile_.open(currentFilePath());
        if (!opened) { // once more: another process may have closed it, and a third one made the next
            failure = opened.error();
            continue;
        }
        if (opened.value() == RecordFile::Opened::anothers) {
            currentLogFileName_ = names_.next(".log");
            continue;
        }
        // Before we had it, another process may have moved it, or closed one of the same name, which ours is not
        // to replace. Besides, the first question takes longer and allocates; no later record is to pay for it.
        // Where a file never looks the same twice, the last look has to do.
        const bool isInPlace = recordFile_.isInPlace() || count + 1 == attempts;
        const bool hasNamesake = isInPlace && recordFile_.size() == 0 && isClosed(*currentLogFileName_);
        if (isInPlace && !hasNamesake) return true;
        if (hasNamesake) {
            (void)collaborators_.fileManager.removeItem(currentFilePath());
            currentLogFileName_ = names_.next(".log");
        }
        recordFile_.close();
    }
    report(failure);
    return false;
}

// Opens the file for the sake of the repair, if this run has not written to it. Who moves a file closes it
// afterwards, so that no other process begins to write to it in between. One that another process closed before
// it was ours is gone; what has its path by now may be a third one's.
Result<bool> FileHandler::claim(RecordFile& file, const std::string& path) {
    if (file.isOpen()) return true;
    const auto opened = file.open(path);
    if (!opened) return opened.error();
    return opened.value() == RecordFile::Opened::ours && file.isInPlace();
}

float FileHandler::append(std::string_view record) {
    if (recordFile_.isOpen() && !recordFile_.isInPlace()) recordFile_.close(); // somebody took it away
    if (recordFile_.isOpen() || openCurrentFile()) {
        const auto appended = recordFile_.append(record);
        if (appended) return static_cast<float>(recordFile_.size());
        recordFile_.close();
        report(appended.error());
    }
    return appFolder_->size(currentFilePath(), Size::bytes(1));
}

void FileHandler::close() {
    appFolder_->createFolders(); // somebody may have taken one away
    if (currentLogFileName_) {
        const auto isOurs = claim(recordFile_, currentFilePath());
        if (!isOurs || isOurs.value()) appFolder_->move(*currentLogFileName_, Folder::events, Folder::upload);
        recordFile_.close();
    }
    moveLeftovers();
    currentLogFileName_ = names_.next(".log");
}

void FileHandler::moveLeftovers() {
    auto& fileManager = collaborators_.fileManager;
    for (const auto& item : appFolder_->items(Folder::events)) {
        if (!AppFolder::isNonEmptyLog(item) || item.name == currentLogFileName_) continue;
        const auto path = appFolder_->path(Folder::events, item.name);
        RecordFile leftover(fileManager);
        const auto isOurs = claim(leftover, path);
        if (isOurs && !isOurs.value()) continue;
        Result<void> moved;
        if (!isOurs) { // nor could it be packed, and it would keep the others from being packed
            moved = isOurs.error();
        } else if (isClosed(item.name)) {
            moved = moveUnderNewName(path);
        } else {
            moved = fileManager.moveItem(path, appFolder_->path(Folder::upload, item.name));
        }
        if (!moved) collaborators_.console.print({"Failed to move a file: ", moved.error().description});
    }
}

Result<void> FileHandler::moveUnderNewName(const std::string& leftover) {
    auto& fileManager = collaborators_.fileManager;
    const WorkFiles work(fileManager, appFolder_->path(Folder::backup));
    NameHolder holder(fileManager, *appFolder_, names_, work.placeholderPath());
    return fileManager.moveItem(leftover, appFolder_->path(Folder::upload, holder.hold(names_.next(".log"))));
}

void FileHandler::trim() {
    const float total = appFolder_->totalSize(Folder::upload, Size::bytes(1));
    const float budget = configuration_->storageSize().inBytes();
    if (total < budget) return;
    std::vector<std::pair<Date, AppFolder::Item>> files;
    for (auto& item : appFolder_->items(Folder::upload)) {
        const auto created = item.attributes ? item.attributes->creationDate : Date{};
        const auto date = DatedNames::date(item.name).value_or(created);
        files.emplace_back(date, std::move(item));
    }
    std::sort(files.begin(), files.end(), [](const auto& left, const auto& right) {
        return std::pair(left.first, std::string_view(left.second.name))
               < std::pair(right.first, std::string_view(right.second.name));
    });
    float sum = 0;
    for (const auto& [date, item] : files) {
        if (item.attributes) sum += static_cast<float>(item.attributes->size);
        (void)appFolder_->remove(appFolder_->path(Folder::upload, item.name));
        if (total - sum <= budget * 0.5F) return;
    }
}

void FileHandler::deleteAllLogs() {
    recordFile_.close();
    for (const auto folder : {Folder::events, Folder::upload, Folder::backup}) {
        const auto names = collaborators_.fileManager.contentsOfDirectory(appFolder_->path(folder));
        if (!names) continue;
        for (const auto& name : names.value()) (void)appFolder_->remove(appFolder_->path(folder, name));
    }
}

std::shared_ptr<ProcessLock> FileHandler::lockClosedFiles() {
    return collaborators_.fileManager.lock(appFolder_->path() + "/.lock");
}

void FileHandler::zip(Turn turn) {
    LogPacker(collaborators_.fileManager, collaborators_.console, *appFolder_, names_).pack(turn);
}

void FileHandler::restore(const std::string& archivePath, const std::vector<std::string>& delivered, Turn turn) {
    ArchiveRestorer(collaborators_.fileManager, collaborators_.console, *appFolder_, names_)
        .restore(archivePath, delivered, turn);
}

bool FileHandler::isRestoring(const std::string& archivePath) { return ArchiveRestorer::isRestoring(archivePath); }

void FileHandler::report(const Error& error) const {
    collaborators_.console.print({"Failed to write to log file: ", error.description});
}

void FileHandler::print(std::string_view text, const std::string& path) const {
    if (collaborators_.console.isOn()) collaborators_.console.print({text, fileURL(path)});
}

} // namespace tallyfoot
