#include "Tallyfoot/Storage/WorkFolder.h"

#include "Tallyfoot/Platform/Exclusive.h"

#include <atomic>
#include <cstdint>
#include <set>
#include <utility>

namespace tallyfoot {

namespace {

constexpr std::string_view prefix = ".work-";
constexpr std::string_view taken = "/taken";
constexpr std::string_view kept = "/kept";

Exclusive<std::set<std::string>>& foldersInUse() {
    static auto& folders = *new Exclusive<std::set<std::string>>;
    return folders;
}

std::string unusedPath(FileManager& fileManager, const std::string& backup) {
    static std::atomic<std::uint64_t> last{0};
    while (true) {
        auto path = backup + '/' + std::string(prefix) + std::to_string(++last);
        if (!fileManager.fileExists(path)) return path;
    }
}

// Whether nothing is left that was taken.
bool giveBack(FileManager& fileManager, const std::string& folder, const std::string& upload) {
    const auto names = fileManager.contentsOfDirectory(folder);
    bool isAll = true;
    if (!names) return isAll;
    for (const auto& name : names.value()) {
        if (!fileManager.moveItem(folder + '/' + name, upload + '/' + name)) isAll = false;
    }
    return isAll;
}

void dissolve(FileManager& fileManager, const std::string& path, const std::string& upload) {
    if (giveBack(fileManager, path + std::string(taken), upload)) (void)fileManager.removeItem(path);
}

} // namespace

WorkFolder::WorkFolder(FileManager& fileManager, std::string backup, std::string upload)
    : fileManager_(fileManager), upload_(std::move(upload)), path_(unusedPath(fileManager, backup)) {
    foldersInUse().modify([&](auto& folders) { folders.insert(path_); });
}

WorkFolder::~WorkFolder() {
    if (fileManager_.fileExists(path_)) dissolve(fileManager_, path_, upload_);
    foldersInUse().modify([&](auto& folders) { folders.erase(path_); });
}

Result<void> WorkFolder::create() { return fileManager_.createDirectory(path_ + std::string(taken)); }

std::string WorkFolder::operator/(std::string_view name) const { return (path_ + '/').append(name); }

Result<void> WorkFolder::take(const std::string& name) {
    return fileManager_.moveItem(upload_ + '/' + name, path_ + std::string(taken) + '/' + name);
}

void WorkFolder::giveBack() { (void)tallyfoot::giveBack(fileManager_, path_ + std::string(taken), upload_); }

void WorkFolder::keep() { (void)fileManager_.moveItem(path_ + std::string(taken), path_ + std::string(kept)); }

std::string WorkFolder::keptPath(std::string_view name) const { return (path_ + std::string(kept) + '/').append(name); }

void WorkFolder::removeAbandoned(FileManager& fileManager, const std::string& backup, const std::string& upload) {
    const auto names = fileManager.contentsOfDirectory(backup);
    if (!names) return;
    for (const auto& name : names.value()) {
        const auto path = backup + '/' + name;
        if (!name.starts_with(prefix)) continue;
        if (foldersInUse().read([&](const auto& folders) { return folders.contains(path); })) continue;
        dissolve(fileManager, path, upload);
    }
}

} // namespace tallyfoot
