#include "Tallyfoot/Storage/WorkFiles.h"

#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Storage/PathNames.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

namespace tallyfoot {

namespace {

// ".work-7.archive.zip", ".work-7.placeholder", ".work-7.entry.<name>", ".work-7.waste.<name>"
constexpr std::string_view nameStart = ".work-";
constexpr std::string_view archiveName = "archive.zip";
constexpr std::string_view placeholderName = "placeholder";
constexpr std::string_view entryStart = "entry.";
constexpr std::string_view wasteStart = "waste.";

std::string joined(std::string_view folder, std::string_view name) {
    return std::string(folder).append("/").append(name);
}

std::string joined(std::string_view folder, std::string_view prefix, std::string_view name) {
    return joined(folder, prefix).append(name);
}

std::string joined(std::string_view folder, std::string_view prefix, std::string_view kind, std::string_view name) {
    return joined(folder, prefix, kind).append(name);
}

// By folder and prefix.
Exclusive<std::set<std::string>>& inUse() {
    static auto& prefixes = *new Exclusive<std::set<std::string>>;
    return prefixes;
}

std::vector<std::string> names(const FileManager& fileManager, const std::string& folder, std::string_view prefix) {
    auto contents = fileManager.contentsOfDirectory(folder);
    if (!contents) return {};
    std::erase_if(contents.value(), [&](const std::string& name) { return !name.starts_with(prefix); });
    return std::move(contents.value());
}

std::string unusedPrefix(const FileManager& fileManager, const std::string& backup) {
    static std::atomic<std::uint64_t> last{0};
    while (true) {
        auto prefix = std::string(nameStart) + std::to_string(++last) + '.';
        if (names(fileManager, backup, prefix).empty()) return prefix;
    }
}

void dissolve(FileManager& fileManager, const std::string& backup, const std::string& prefix) {
    for (const auto& name : names(fileManager, backup, prefix)) (void)fileManager.removeItem(joined(backup, name));
}

} // namespace

WorkFiles::WorkFiles(FileManager& fileManager, std::string backup)
    : fileManager_(fileManager), backup_(std::move(backup)), prefix_(unusedPrefix(fileManager, backup_)) {
    inUse().modify([&](auto& prefixes) { prefixes.insert(joined(backup_, prefix_)); });
}

WorkFiles::~WorkFiles() {
    dissolve(fileManager_, backup_, prefix_);
    inUse().modify([&](auto& prefixes) { prefixes.erase(joined(backup_, prefix_)); });
}

std::string WorkFiles::archivePath() const { return joined(backup_, prefix_, archiveName); }

std::string WorkFiles::placeholderPath() const { return joined(backup_, prefix_, placeholderName); }

std::string WorkFiles::entryPath(std::string_view name) const { return joined(backup_, prefix_, entryStart, name); }

std::string WorkFiles::discardedPath(std::string_view name) const { return joined(backup_, prefix_, wasteStart, name); }

Result<void> WorkFiles::discard(const std::string& path) {
    return fileManager_.moveItem(path, discardedPath(lastPathComponent(path)));
}

void WorkFiles::removeAbandoned(FileManager& fileManager, const std::string& backup) {
    const auto used = inUse().copy();
    std::set<std::string> prefixes;
    for (const auto& name : names(fileManager, backup, nameStart)) {
        const auto end = name.find('.', nameStart.size()); // without one it is a stranger's
        if (end != std::string::npos) prefixes.insert(name.substr(0, end + 1));
    }
    for (const auto& prefix : prefixes) {
        if (!used.contains(joined(backup, prefix))) dissolve(fileManager, backup, prefix);
    }
    const auto folder = backup + '/';
    if (std::ranges::any_of(used, [&](const auto& prefix) { return prefix.starts_with(folder); })) return;
    for (const auto& name : names(fileManager, backup, ".")) { // what a killed write had not renamed yet
        if (!name.starts_with(nameStart)) (void)fileManager.removeItem(joined(backup, name));
    }
}

} // namespace tallyfoot
