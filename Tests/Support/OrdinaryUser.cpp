#include "Support/OrdinaryUser.h"

#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

namespace tallyfoot::testing {

namespace {

bool give(const std::string& path, unsigned user) { return ::lchown(path.c_str(), user, user) == 0; }

} // namespace

bool asOrdinaryUser(const TemporaryFolder& folder, const std::function<bool()>& check) {
    if (::getuid() != 0) return check();
    constexpr unsigned nobody = 65534;
    if (!give(folder.path(), nobody)) return false;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
        if (!give(entry.path(), nobody)) return false;
    }
    const auto child = ::fork();
    if (child == 0) ::_exit(::setgid(nobody) == 0 && ::setuid(nobody) == 0 && check() ? 0 : 1);
    int status = -1;
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

} // namespace tallyfoot::testing
