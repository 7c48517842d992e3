#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"

#include "Tallyfoot/Platform/Posix/BinaryPropertyList.h"
#include "Tallyfoot/Platform/Posix/PosixFileManager.h"
#include "Tallyfoot/Platform/Posix/XMLPropertyList.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace tallyfoot {

std::optional<PropertyList> PosixPropertyLists::propertyList(std::string_view bytes) const {
    if (bytes.size() > maximumSize) return std::nullopt;
    return bytes.starts_with(binarypropertylist::signature) ? binarypropertylist::decoded(bytes)
                                                            : xmlpropertylist::decoded(bytes);
}

std::string PosixPropertyLists::data(const PropertyList& list) const { return binarypropertylist::encoded(list); }

std::optional<PropertyList::Dictionary> PosixPropertyLists::dictionary(const std::string& path) const {
    std::error_code failed;
    if (std::filesystem::file_size(path, failed) > maximumSize || failed) return std::nullopt;
    const auto bytes = PosixFileManager().contents(path);
    if (!bytes) return std::nullopt;
    auto list = propertyList(bytes.value());
    if (!list || list->as<PropertyList::Dictionary>() == nullptr) return std::nullopt;
    return std::get<PropertyList::Dictionary>(std::move(list->value));
}

} // namespace tallyfoot
