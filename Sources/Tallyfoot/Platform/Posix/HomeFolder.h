#pragma once

#include <optional>
#include <string>

namespace tallyfoot {

// A path from the process's environment; one that is not absolute counts as unset.
std::optional<std::string> pathVariable(const char* name);

// $HOME, else the home of the passwd entry.
std::optional<std::string> homeFolder();

} // namespace tallyfoot
