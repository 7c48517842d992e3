#include "Tallyfoot/Storage/ArchiveClaim.h"

#include "Tallyfoot/Platform/Exclusive.h"

#include <set>
#include <utility>

namespace tallyfoot {

namespace {

Exclusive<std::set<std::string>>& heldArchives() {
    static auto& archives = *new Exclusive<std::set<std::string>>;
    return archives;
}

} // namespace

ArchiveClaim::ArchiveClaim(std::string archivePath)
    : path_(std::move(archivePath)),
      isOurs_(heldArchives().modify([&](auto& paths) { return paths.insert(path_).second; })) {}

ArchiveClaim::~ArchiveClaim() {
    if (isOurs_) heldArchives().modify([&](auto& paths) { paths.erase(path_); });
}

bool ArchiveClaim::isHeld(const std::string& archivePath) {
    return heldArchives().read([&](const auto& paths) { return paths.contains(archivePath); });
}

} // namespace tallyfoot
