#pragma once

#include "Tallyfoot/Platform/PropertyLists.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

// One small property-list file a key. The file's name is the key and ".plist", every byte that is no
// ASCII letter, digit or underscore written as "%" and two digits. Readers see the former file or
// the whole new one. Writing and removing under the lock of the store.
class ValueFiles {
public:
    ValueFiles(std::string folder, std::shared_ptr<PropertyLists> lists);

    std::optional<PropertyList> read(std::string_view key) const; // nothing where nothing sound is stored
    bool write(std::string_view key, const PropertyList& value);  // false where it cannot be kept
    bool remove(std::string_view key);                            // true when it is gone afterwards

    // Nothing for a key whose name would be longer than file systems take.
    std::optional<std::string> pathOf(std::string_view key) const;

private:
    std::string folder_;
    std::shared_ptr<PropertyLists> lists_;
};

} // namespace tallyfoot
