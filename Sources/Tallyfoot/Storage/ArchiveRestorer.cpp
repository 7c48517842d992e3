#include "Tallyfoot/Storage/ArchiveRestorer.h"

#include "Tallyfoot/Storage/Archive.h"
#include "Tallyfoot/Storage/ArchiveClaim.h"
#include "Tallyfoot/Storage/PathNames.h"

#include <algorithm>

namespace tallyfoot {

using Folder = AppFolder::Folder;

namespace {

bool isSame(const FileAttributes& left, const FileAttributes& right) noexcept {
    return left.size == right.size && left.creationDate == right.creationDate;
}

} // namespace

ArchiveRestorer::ArchiveRestorer(FileManager& fileManager, DebugConsole console, AppFolder& appFolder,
                                 const DatedNames& names)
    : fileManager_(fileManager), console_(console), appFolder_(appFolder), names_(names) {}

bool ArchiveRestorer::isRestoring(const std::string& archivePath) { return ArchiveClaim::isHeld(archivePath); }

void ArchiveRestorer::restore(const std::string& archivePath, const std::vector<std::string>& delivered, Turn turn) {
    const ArchiveClaim claim(archivePath);
    if (!claim) return report({"the archive is being restored already"});
    WorkFiles work(fileManager_, appFolder_.path(Folder::backup));
    auto unpacked = unpack(archivePath, work);
    if (!unpacked) return report(unpacked.error());
    auto& entries = unpacked.value();
    for (const auto& name : delivered) {
        if (const auto entry = entries.find(name); entry != entries.end()) entry->second.isDelivered = true;
    }

    NameHolder holder(fileManager_, appFolder_, names_, work.placeholderPath());
    auto next = entries.begin();
    for (bool isDone = false; !isDone;) {
        turn([&] {
            // Deleted meanwhile, with all logs: the user has changed.
            isDone = !fileManager_.fileExists(archivePath);
            for (int count = 0; count < filesPerTurn && next != entries.end() && !isDone; ++count, ++next) {
                const auto done = putInPlace(next->first, next->second, work, holder);
                if (done) continue;
                takeBack(entries);
                report(done.error());
                isDone = true;
            }
            holder.release();
            if (isDone || next != entries.end()) return;
            finish(archivePath, delivered, entries, work);
            isDone = true;
        });
    }
}

Result<ArchiveRestorer::Entries> ArchiveRestorer::unpack(const std::string& archivePath, WorkFiles& work) const {
    auto names = Archive::unpack(fileManager_, archivePath, work.entryPath({}));
    if (!names) return names.error();
    Entries entries;
    for (auto& name : names.value()) {
        auto same = twin(name, work);
        entries[std::move(name)].twin = same;
    }
    return entries;
}

std::optional<FileAttributes> ArchiveRestorer::twin(const std::string& name, const WorkFiles& work) const {
    const auto there = appFolder_.path(Folder::upload, name);
    const auto restored = work.entryPath(name);
    const auto attributes = fileManager_.attributesOfItem(there);
    const auto restoredAttributes = fileManager_.attributesOfItem(restored);
    if (!attributes || !restoredAttributes || !attributes.value().isRegular) return {};
    if (attributes.value().size != restoredAttributes.value().size) return {};
    const auto bytes = fileManager_.contents(there);
    const auto restoredBytes = fileManager_.contents(restored);
    if (!bytes || !restoredBytes || bytes.value() != restoredBytes.value()) return {};
    return attributes.value();
}

bool ArchiveRestorer::isTwinThere(const std::string& name, const Entry& entry) const {
    if (!entry.twin) return false;
    const auto there = fileManager_.attributesOfItem(appFolder_.path(Folder::upload, name));
    return there && isSame(there.value(), *entry.twin);
}

Result<void> ArchiveRestorer::putInPlace(const std::string& name, Entry& entry, const WorkFiles& work,
                                         NameHolder& holder) {
    // What was delivered never comes into sight.
    if (entry.isDelivered) return {};
    holder.removeAbandoned(name);
    if (isTwinThere(name, entry)) return {};
    // Nor may it lie where a file of that name that is being written will move to.
    auto path = appFolder_.path(Folder::upload, holder.hold(name));
    auto moved = fileManager_.moveItem(work.entryPath(name), path);
    if (moved) entry.restoredPath = std::move(path);
    return moved;
}

void ArchiveRestorer::takeBack(const Entries& entries) {
    for (const auto& [name, entry] : entries) {
        if (!entry.restoredPath.empty()) (void)fileManager_.removeItem(entry.restoredPath);
    }
}

void ArchiveRestorer::finish(const std::string& archivePath, const std::vector<std::string>& delivered,
                             Entries& entries, WorkFiles& work) {
    // Out of Backup at once; the work of deleting need not hold the turn.
    if (!work.discard(archivePath)) (void)appFolder_.remove(archivePath);
    for (const auto& name : delivered) {
        const auto entry = entries.find(name);
        removeDelivered(name, entry == entries.end() ? nullptr : &entry->second);
    }
}

void ArchiveRestorer::removeDelivered(const std::string& name, Entry* entry) {
    if (!isPlainFileName(name)) return console_.print({"Failed to delete a file: ", name, " is no file name"});
    if (entry == nullptr) return (void)appFolder_.remove(appFolder_.path(Folder::upload, name));
    // A namesake with other bytes is not what was delivered.
    if (entry->isDeleted) return console_.print({"Failed to delete a file: ", name, " is deleted already"});
    if (isTwinThere(name, *entry)) (void)appFolder_.remove(appFolder_.path(Folder::upload, name));
    entry->isDeleted = true;
}

void ArchiveRestorer::report(const Error& error) const {
    console_.print({"Failed to restore files: ", error.description});
}

} // namespace tallyfoot
