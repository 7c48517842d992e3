#include "Tallyfoot/Storage/AppFolder.h"

#include "Tallyfoot/Platform/FatalError.h"
#include "Tallyfoot/Storage/PathNames.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tallyfoot {

namespace {

constexpr std::string_view name(AppFolder::Folder folder) noexcept {
    switch (folder) {
    case AppFolder::Folder::events: return "Events";
    case AppFolder::Folder::upload: return "Upload";
    case AppFolder::Folder::backup: return "Backup";
    }
    return {};
}

std::string joined(std::string_view folder, std::string_view name) {
    std::string path;
    path.reserve(folder.size() + 1 + name.size());
    path += folder;
    path += '/';
    path += name;
    return path;
}

bool isNewer(const AppFolder::Item& left, const AppFolder::Item& right) {
    const auto date = [](const AppFolder::Item& item) {
        return item.attributes ? item.attributes->creationDate : Date{};
    };
    return std::pair(date(left), std::string_view(left.name)) > std::pair(date(right), std::string_view(right.name));
}

} // namespace

AppFolder::AppFolder(FileManager& fileManager, DebugConsole console, std::shared_ptr<const ApplicationInfo> appInfo)
    : fileManager_(fileManager), console_(console), appInfo_(std::move(appInfo)) {}

const std::string& AppFolder::appName() const {
    if (!appInfo_) fatalError("An application folder was used without its application");
    return appInfo_->appName();
}

std::string AppFolder::root() const {
    const auto support = fileManager_.applicationSupportDirectory();
    if (!support || support->empty()) fatalError("There is no application support directory");
    return joined(*support, "Tallyfoot");
}

std::string AppFolder::path() const { return joined(root(), pathComponent(appName())); }

std::string AppFolder::path(Folder folder) const { return joined(path(), tallyfoot::name(folder)); }

std::string AppFolder::path(Folder folder, std::string_view name) const { return joined(path(folder), name); }

void AppFolder::createFolders() {
    std::vector<std::string> missing{root(), path(), path(Folder::events), path(Folder::upload), path(Folder::backup)};
    std::erase_if(missing, [this](const std::string& folder) { return fileManager_.directoryExists(folder); });
    for (const auto& folder : missing) (void)fileManager_.createDirectory(folder);
}

std::vector<AppFolder::Item> AppFolder::items(Folder folder) const {
    const auto path = this->path(folder);
    auto contents = fileManager_.contentsOfDirectory(path);
    if (!contents) return {};
    std::vector<Item> items;
    items.reserve(contents.value().size());
    for (auto& name : contents.value()) {
        if (name.starts_with('.')) continue;
        auto attributes = fileManager_.attributesOfItem(joined(path, name));
        items.push_back({std::move(name), attributes ? std::optional(attributes.value()) : std::nullopt});
    }
    std::sort(items.begin(), items.end(), isNewer);
    return items;
}

std::vector<std::string> AppFolder::fileNames(Folder folder) const {
    std::vector<std::string> names;
    for (auto& item : items(folder)) names.push_back(std::move(item.name));
    return names;
}

std::vector<std::string> AppFolder::filePaths(Folder folder) const {
    auto paths = fileNames(folder);
    const auto path = this->path(folder);
    for (auto& name : paths) name = joined(path, name);
    return paths;
}

std::vector<std::string> AppFolder::archivePaths() const {
    auto paths = filePaths(Folder::backup);
    std::erase_if(paths, [](const std::string& path) { return !path.ends_with(".zip"); });
    return paths;
}

std::vector<std::string> AppFolder::nonEmptyLogPaths(Folder folder) const {
    std::vector<std::string> paths;
    const auto path = this->path(folder);
    for (const auto& item : items(folder)) {
        if (isNonEmptyLog(item)) paths.push_back(joined(path, item.name));
    }
    return paths;
}

bool AppFolder::isNonEmptyLog(const Item& item) noexcept {
    return item.name.ends_with(".log") && item.attributes && item.attributes->isRegular && item.attributes->size >= 1;
}

bool AppFolder::mayHoldLogs() const {
    const auto folders = fileManager_.contentsOfDirectory(path());
    if (!folders) return fileManager_.fileExists(path());
    return std::ranges::any_of(std::array{Folder::events, Folder::upload, Folder::backup}, [&](Folder folder) {
        return std::ranges::count(folders.value(), tallyfoot::name(folder)) != 0 && mayHoldLogs(folder);
    });
}

bool AppFolder::mayHoldLogs(Folder folder) const {
    const auto names = fileManager_.contentsOfDirectory(path(folder));
    if (!names) return true;
    return std::ranges::any_of(names.value(), [&](const std::string& name) {
        if (name.starts_with('.')) return false;
        if (folder == Folder::backup) return name.ends_with(".zip");
        if (!name.ends_with(".log")) return false;
        const auto attributes = fileManager_.attributesOfItem(path(folder, name));
        return !attributes || isNonEmptyLog({name, attributes.value()});
    });
}

bool AppFolder::move(const std::string& name, Folder from, Folder to) {
    const auto source = path(from, name);
    const auto destination = path(to, name);
    Result<void> moved;
    // Without a source there is nothing to make room for: what is there stays.
    if (source != destination && fileManager_.fileExists(destination) && fileManager_.fileExists(source)) {
        moved = fileManager_.removeItem(destination);
    }
    if (moved) moved = fileManager_.moveItem(source, destination);
    if (!moved) console_.print({"Failed to move a file: ", moved.error().description});
    return static_cast<bool>(moved);
}

bool AppFolder::remove(const std::string& path) {
    const auto removed = fileManager_.removeItem(path);
    if (!removed) console_.print({"Failed to delete a file: ", removed.error().description});
    return static_cast<bool>(removed);
}

void AppFolder::removeAll() {
    const auto folder = path();
    if (fileManager_.fileExists(folder)) (void)fileManager_.removeItem(folder);
}

float AppFolder::size(const std::string& path, Size unit) const {
    const auto attributes = fileManager_.attributesOfItem(path);
    return attributes ? static_cast<float>(attributes.value().size) / unit.inBytes() : 0;
}

float AppFolder::totalSize(Folder folder, Size unit) const {
    const auto path = this->path(folder);
    const auto subpaths = fileManager_.subpathsOfDirectory(path);
    if (!subpaths) return 0;
    std::uint64_t total = 0;
    for (const auto& subpath : subpaths.value()) {
        if (const auto attributes = fileManager_.attributesOfItem(joined(path, subpath)))
            total += attributes.value().size;
    }
    return static_cast<float>(total) / unit.inBytes();
}

} // namespace tallyfoot
