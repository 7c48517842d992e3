#include "Tallyfoot/Platform/Posix/HomeFolder.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace tallyfoot {

namespace {

std::optional<std::string> absolute(const char* path) {
    if (path == nullptr || *path != '/') return std::nullopt;
    return path;
}

std::optional<std::string> passwordHome() {
    std::vector<char> buffer(1U << 14U);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr)
        return std::nullopt;
    return absolute(found->pw_dir);
}

} // namespace

std::optional<std::string> pathVariable(const char* name) { return absolute(std::getenv(name)); }

std::optional<std::string> homeFolder() {
    auto home = pathVariable("HOME");
    return home ? home : passwordHome();
}

} // namespace tallyfoot
