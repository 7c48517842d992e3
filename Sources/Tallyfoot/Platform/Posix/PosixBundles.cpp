#include "Tallyfoot/Platform/Posix/PosixBundles.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <utility>

namespace tallyfoot {

namespace {

std::optional<std::filesystem::path> givenFolder() {
    const char* given = std::getenv("TALLYFOOT_MAIN_BUNDLE");
    if (given == nullptr || *given == '\0') return std::nullopt;
    return given;
}

std::filesystem::path executable() {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored);
}

std::string mainBundleFolder() {
    std::error_code ignored;
    const auto folder = givenFolder().value_or(executable().parent_path());
    // One bundle has one path, however it was named: what is kept for it goes by that.
    auto real = std::filesystem::weakly_canonical(std::filesystem::absolute(folder, ignored), ignored);
    return ignored ? folder.string() : real.string();
}

bool exists(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

} // namespace

struct PosixBundle::Information {
    std::once_flag once;
    PropertyList::Dictionary entries;
};

PosixBundle::PosixBundle(std::string path, std::shared_ptr<const PropertyLists> propertyLists)
    : path_(std::move(path)), propertyLists_(std::move(propertyLists)), information_(std::make_unique<Information>()) {}

PosixBundle::~PosixBundle() = default;

std::optional<std::string> PosixBundle::information(std::string_view key) const {
    std::call_once(information_->once, [this] {
        const auto file = pathForResource("Info", "plist");
        if (!file) return;
        if (auto entries = propertyLists_->dictionary(*file)) information_->entries = *std::move(entries);
    });
    const auto entry = information_->entries.find(key);
    if (entry == information_->entries.end()) return std::nullopt;
    const auto* text = entry->second.as<std::string>();
    return text == nullptr ? std::nullopt : std::optional(*text);
}

std::optional<std::string> PosixBundle::pathForResource(std::string_view name, std::string_view type) const {
    auto file = std::string(name);
    if (!type.empty()) file.append(".").append(type);
    for (const char* folder : {"/", "/Resources/"})
        if (auto path = path_ + folder + file; exists(path)) return path;
    return std::nullopt;
}

PosixBundles::PosixBundles(std::shared_ptr<const PropertyLists> propertyLists)
    : propertyLists_(std::move(propertyLists)), mainBundle_(mainBundleFolder(), propertyLists_) {}

std::string PosixBundles::applicationPath() const {
    if (givenFolder() || mainBundle_.pathForResource("Info", "plist")) return mainBundle_.path();
    auto path = executable().string();
    constexpr std::string_view removed = " (deleted)"; // the system's word for one that was replaced meanwhile
    if (path.ends_with(removed) && !exists(path)) path.resize(path.size() - removed.size());
    return path;
}

std::vector<std::shared_ptr<const Bundle>> PosixBundles::allFrameworks() const {
    std::error_code failed;
    std::vector<std::string> paths;
    std::filesystem::directory_iterator entry(mainBundle_.path() + "/Frameworks", failed);
    for (; !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed)) {
        std::error_code ignored;
        if (entry->path().extension() == ".framework" && entry->is_directory(ignored))
            paths.push_back(entry->path().string());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<std::shared_ptr<const Bundle>> frameworks;
    frameworks.reserve(paths.size());
    for (auto& path : paths) frameworks.push_back(std::make_shared<PosixBundle>(std::move(path), propertyLists_));
    return frameworks;
}

} // namespace tallyfoot
