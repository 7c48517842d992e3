#include "Tallyfoot/Platform/Posix/SystemError.h"

#include <string.h>

#include <string>

namespace tallyfoot {

namespace {

std::string_view lastComponent(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    const auto slash = path.rfind('/');
    return slash == path.npos || path.size() == 1 ? path : path.substr(slash + 1);
}

} // namespace

Error systemError(std::string_view action, std::string_view path, int number) {
    std::string text = "Cannot ";
    text.append(action).append(" ").append(lastComponent(path)).append(": ");
    // The translated texts would follow the host's locale, and strerror shares a buffer on some systems.
    if (const char* description = ::strerrordesc_np(number)) return {text + description};
    return {text + "error " + std::to_string(number)};
}

} // namespace tallyfoot
