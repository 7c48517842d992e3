#pragma once

#include "Tallyfoot/Platform/Coder.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot {

// Keyed archives: binary property lists that any unarchiver of the platform reads back. Any thread.
// What is no such archive unarchives to nothing. Apple: NSKeyedArchiver and NSKeyedUnarchiver.
class KeyedArchiver {
public:
    virtual ~KeyedArchiver() = default;
    virtual std::string archivedData(const Coder& root) const = 0;
    virtual std::string archivedData(const std::vector<Coder>& rootArray) const = 0;
    virtual std::optional<Coder> unarchivedObject(std::string_view data) const = 0;
    virtual std::optional<std::vector<Coder>> unarchivedArray(std::string_view data) const = 0;
};

} // namespace tallyfoot
