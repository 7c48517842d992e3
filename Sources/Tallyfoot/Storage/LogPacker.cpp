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
    for (int count = 0; count < attempts; ++count) {
        const auto logs = closedLogs(turn);
        if (logs.empty() || attempt(logs, turn) != Outcome::changed) return;
    }
    report("the log files keep changing");
}

LogPacker::Logs LogPacker::closedLogs(Turn turn) {
    auto logs = appFolder_.items(Folder::upload);
    for (const auto& item : logs) {
        if (!item.name.ends_with(".log") || !item.attributes || item.attributes->size != 0) continue;
        turn([&] {
            if (isUnchanged(item)) (void)appFolder_.remove(appFolder_.path(Folder::upload, item.name));
        });
    }
    std::erase_if(logs, [](const AppFolder::Item& item) { return !AppFolder::isNonEmptyLog(item); });
    return logs;
}

LogPacker::Outcome LogPacker::attempt(const Logs& logs, Turn turn) {
    WorkFiles work(fileManager_, appFolder_.path(Folder::backup), appFolder_.path(Folder::upload));
    if (const auto packed = pack(logs, work); !packed) {
        if (!areUnchanged(logs)) return Outcome::changed;
        report(packed.error().description);
        return Outcome::failed;
    }
    const auto stuck = take(logs, work, turn);
    if (!stuck) {
        turn([&] { work.giveBack(); });
        return Outcome::changed;
    }
    Result<void> done;
    bool isStillWanted = true;
    turn([&] {
        // Gone with all logs, when the user has changed meanwhile.
        isStillWanted = fileManager_.fileExists(work.archivePath());
        if (isStillWanted) done = finish(*stuck, work);
        if (!done) work.giveBack();
    });
    if (!isStillWanted) return Outcome::changed;
    if (!done) {
        report(done.error().description);
        return Outcome::failed;
    }
    echo(logs, work);
    return Outcome::packed;
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

std::optional<LogPacker::Names> LogPacker::take(const Logs& logs, WorkFiles& work, Turn turn) const {
    Names stuck;
    bool areAsNoted = true;
    for (auto log = logs.begin(); log != logs.end() && areAsNoted;) {
        turn([&] {
            for (int count = 0; count < filesPerTurn && log != logs.end() && areAsNoted; ++count, ++log) {
                areAsNoted = isUnchanged(*log);
                if (areAsNoted && !work.take(log->name)) stuck.push_back(log->name);
            }
        });
    }
    return areAsNoted ? std::optional(std::move(stuck)) : std::nullopt;
}

Result<void> LogPacker::finish(const Names& stuck, WorkFiles& work) {
    const auto archive = appFolder_.path(Folder::backup, names_.next(".zip"));
    if (auto moved = fileManager_.moveItem(work.archivePath(), archive); !moved) return moved;
    for (const auto& name : stuck) (void)appFolder_.remove(appFolder_.path(Folder::upload, name)); // says why not
    return {};
}

void LogPacker::echo(const Logs& logs, const WorkFiles& work) const {
    for (const auto& log : logs) {
        if (!console_.isOn()) return;
        const auto text = fileManager_.contents(work.takenPath(log.name));
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
