#include "Tallyfoot/Storage/HeldName.h"

#include <string_view>
#include <utility>

namespace tallyfoot {

namespace {

std::string_view extension(std::string_view name) noexcept {
    const auto dot = name.rfind('.');
    return dot == name.npos ? std::string_view() : name.substr(dot);
}

} // namespace

HeldName::HeldName(FileManager& fileManager, const AppFolder& appFolder, const DatedNames& names, std::string wish)
    : fileManager_(fileManager), appFolder_(appFolder), name_(std::move(wish)) {
    constexpr int attempts = 64; // each may lose a name to one more process
    for (int count = 0; isInUse() && count < attempts; ++count) name_ = names.next(extension(name_));
}

HeldName::~HeldName() { release(); }

bool HeldName::isInUse() {
    const auto path = pathInEvents();
    if (fileManager_.writeAtomically(path, {})) {
        auto made = fileManager_.fileHandleForWriting(path);
        if (made && made.value()->lock()) placeholder_ = std::move(made.value());
    }
    // Not before it is held: until then a file of this name may have been closed.
    if (!fileManager_.fileExists(appFolder_.path(AppFolder::Folder::upload, name_)))
        return !placeholder_ && fileManager_.fileExists(path);
    release();
    return true;
}

void HeldName::release() {
    if (placeholder_) (void)fileManager_.removeItem(pathInEvents()); // while it is locked
    placeholder_.reset();
}

} // namespace tallyfoot
