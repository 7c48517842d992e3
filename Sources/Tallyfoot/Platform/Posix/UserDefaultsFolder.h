#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

// Where an application's user defaults live: $XDG_CONFIG_HOME if it is absolute, else .config in the
// user's home; below it "Tallyfoot" and one folder an application. Nothing when the user has no home.
std::optional<std::string> userDefaultsFolder(std::string_view applicationPath);

// One name per path, and readable: "/opt/Shop-2/bin" is "-opt-Shop%2D2-bin". A slash is written as
// "-"; letters, digits, "." and "_" stand for themselves, every other byte as "%" and two digits.
// A name beyond 200 bytes keeps its end, behind "~", 32 hexadecimal digits of the whole path's
// FNV-1a hash, and "~".
std::string bundleFolderName(std::string_view applicationPath);

} // namespace tallyfoot
