#include "Recording/ShakyDisk.h"

#include "Tallyfoot/Platform/PlatformServices.h"

#include <new>

namespace tallyfoot::testing {

ShakyDisk::ShakyDisk() : RelayFileManager(*defaultPlatformServices().fileManager) {}

Result<std::vector<std::string>> ShakyDisk::contentsOfDirectory(const std::string& path) const {
    if (cannotList) return Error{"Too many open files"};
    return RelayFileManager::contentsOfDirectory(path);
}

Result<void> ShakyDisk::moveItem(const std::string& source, const std::string& destination) {
    if (cannotChange) return Error{"Read-only file system"};
    return RelayFileManager::moveItem(source, destination);
}

Result<void> ShakyDisk::removeItem(const std::string& path) {
    if (cannotChange) return Error{"Read-only file system"};
    return RelayFileManager::removeItem(path);
}

Result<std::string> ShakyDisk::contents(const std::string& path) const {
    if (hasNoMemory) throw std::bad_alloc();
    return RelayFileManager::contents(path);
}

Result<void> ShakyDisk::writeAtomically(const std::string& path, std::string_view bytes) {
    if (hasNoMemory) throw std::bad_alloc();
    return RelayFileManager::writeAtomically(path, bytes);
}

} // namespace tallyfoot::testing
