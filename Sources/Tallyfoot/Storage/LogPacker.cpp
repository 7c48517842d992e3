#include "Tallyfoot/Storage/LogPacker.h"

#include "Tallyfoot/Storage/Archive.h"

#include <algorithm>
#include <utility>

namespace tallyfoot {

using Folder = AppFolder::Folder;

LogPacker::LogPacker(FileManager& fileManager, DebugConsole console, AppFolder& appFolder, const DatedNames& names)
    : fileManager_(fileManager), console_(console), appFolder_(appFolder), names_(names) {}

void LogPacker::pack(Turn turn) {
    constexpr int attempts = 4;
    bool withoutUnreadable = false;
    for (int count = 0; count < attempts; ++count) {
        auto logs = closedLogs(turn);
        if (withoutUnreadable) removeUnreadable(logs);
        if (logs.empty()) return;
        const auto outcome = attempt(logs, turn);
        if (outcome == Outcome::packed) return;
        if (outcome == Outcome::changed) continue;
        if (withoutUnreadable || !removeUnreadable(logs)) return;
        withoutUnreadable = true;
    }
    report("the log files keep changing");
}

LogPacker::Logs LogPacker::closedLogs(Turn turn) {
    auto logs = appFolder_.items(Folder::upload);
    for (const auto& item : logs) {
        if (!item.name.ends_with(".log") || !item.attributes || !item.attributes->isRegular) continue;
        if (item.attributes->size != 0) continue;
        turn([&] {
            if (isUnchanged(item)) (void)appFolder_.remove(appFolder_.path(Folder::upload, item.name));
        });
    }
    std::erase_if(logs, [](const AppFolder::Item& item) { return !AppFolder::isNonEmptyLog(item); });
    return logs;
}

bool LogPacker::removeUnreadable(Logs& logs) const {
    return std::erase_if(logs,
                         [this](const AppFolder::Item& item) {
                             return !fileManager_.contents(appFolder_.path(Folder::upload, item.name));
                         })
           > 0;
}

LogPacker::Outcome LogPacker::attempt(const Logs& logs, Turn turn) {
    WorkFiles work(fileManager_, appFolder_.path(Folder::backup));
    const auto packed = pack(logs, work);
    if (!packed && areUnchanged(logs)) {
        report(packed.error().description);
        return Outcome::failed;
    }
    if (!packed) return Outcome::changed;

    auto outcome = Outcome::packed;
    auto next = logs.begin();
    // Nobody may restore the archive before its logs have left, or they would go as packed ones.
    std::optional<ArchiveClaim> claim;
    turn([&] {
        // Trimmed meanwhile, or gone with all logs because the user has changed.
        if (!areUnchanged(logs) || !fileManager_.fileExists(work.archivePath())) {
            outcome = Outcome::changed;
        } else if (const auto moved = putInPlace(work, claim); !moved) {
            report(moved.error().description);
            outcome = Outcome::failed;
        } else {
            next = discardSome(logs, next, work);
        }
    });
    if (outcome != Outcome::packed) return outcome;
    while (next != logs.end()) turn([&] { next = discardSome(logs, next, work); });
    echo(logs, work);
    return outcome;
}

Result<void> LogPacker::pack(const Logs& logs, WorkFiles& work) const {
    std::vector<std::string> paths;
    paths.reserve(logs.size());
    for (const auto& log : logs) paths.push_back(appFolder_.path(Folder::upload, log.name));
    return Archive::pack(paths, work.archivePath());
}

bool LogPacker::areUnchanged(const Logs& logs) const {
    return std::all_of(logs.begin(), logs.end(), [this](const auto& log) { return isUnchanged(log); });
}

bool LogPacker::isUnchanged(const AppFolder::Item& log) const {
    const auto now = fileManager_.attributesOfItem(appFolder_.path(Folder::upload, log.name));
    return now && now.value().size == log.attributes->size && now.value().creationDate == log.attributes->creationDate;
}

Result<void> LogPacker::putInPlace(const WorkFiles& work, std::optional<ArchiveClaim>& claim) const {
    const auto archive = appFolder_.path(Folder::backup, names_.next(".zip"));
    claim.emplace(archive);
    return fileManager_.moveItem(work.archivePath(), archive);
}

LogPacker::Logs::const_iterator LogPacker::discardSome(const Logs& logs, Logs::const_iterator next,
                                                       WorkFiles& work) const {
    for (int count = 0; count < filesPerTurn && next != logs.end(); ++count, ++next) {
        const auto path = appFolder_.path(Folder::upload, next->name);
        if (isUnchanged(*next) && !work.discard(path)) (void)appFolder_.remove(path); // says why not
    }
    return next;
}

void LogPacker::echo(const Logs& logs, const WorkFiles& work) const {
    for (const auto& log : logs) {
        if (!console_.isOn()) return;
        const auto text = fileManager_.contents(work.discardedPath(log.name));
        if (!text) continue;
        constexpr std::string_view frame = "*******\n";
        std::string block;
        block.reserve(text.value().size() + log.name.size() + 2 * frame.size() + 3);
        block.append(frame).append(log.name).append("\n\n").append(text.value()).append("\n").append(frame);
        console_.printBlock(block);
    }
}

void LogPacker::report(std::string_view error) const { console_.print({"Error while zipping files: ", error}); }

} // namespace tallyfoot
