#include "Tallyfoot/Storage/NameHolder.h"

#include "Tallyfoot/Storage/RecordFile.h"

#include <string_view>
#include <utility>

namespace tallyfoot {

namespace {

std::string_view extension(std::string_view name) noexcept {
    const auto dot = name.rfind('.');
    return dot == name.npos ? std::string_view() : name.substr(dot);
}

} // namespace

NameHolder::NameHolder(FileManager& fileManager, const AppFolder& appFolder, const DatedNames& names, std::string path)
    : fileManager_(fileManager), appFolder_(appFolder), names_(names), restingPath_(std::move(path)),
      path_(restingPath_) {
    if (!fileManager_.writeAtomically(path_, {})) return;
    auto made = fileManager_.fileHandleForWriting(path_);
    if (made && made.value()->lock()) lock_ = std::move(made.value());
}

std::string NameHolder::hold(std::string wish) {
    constexpr int attempts = 64; // each may lose a name to one more process
    for (int count = 0; isInUse(wish) && count < attempts; ++count) wish = names_.next(extension(wish));
    return wish;
}

void NameHolder::release() {
    if (path_ != restingPath_ && fileManager_.moveItem(path_, restingPath_)) path_ = restingPath_;
}

void NameHolder::removeAbandoned(const std::string& name) {
    const auto path = appFolder_.path(AppFolder::Folder::events, name);
    if (path == path_) return; // our own
    const auto found = fileManager_.attributesOfItem(path);
    if (!found || !found.value().isRegular || found.value().size != 0) return;
    // Another process may be about to write to it, or may have written and closed it by now.
    RecordFile file(fileManager_);
    const auto opened = file.open(path);
    if (opened && opened.value() == RecordFile::Opened::ours && file.size() == 0 && file.isInPlace())
        (void)fileManager_.removeItem(path);
}

bool NameHolder::isInUse(const std::string& name) {
    auto path = appFolder_.path(AppFolder::Folder::events, name);
    const bool isOurs = lock_ && fileManager_.moveItem(path_, path);
    const bool isWritten = !isOurs && fileManager_.fileExists(path);
    if (isOurs) path_ = std::move(path);
    // Not before it is held: until then a file of this name may have been closed.
    return isWritten || fileManager_.fileExists(appFolder_.path(AppFolder::Folder::upload, name));
}

} // namespace tallyfoot
