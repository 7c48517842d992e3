#include "Support/OrdinaryUser.h"

#include <sys/wait.h>
#include <unistd.h>

namespace tallyfoot::testing {

bool asOrdinaryUser(const TemporaryFolder& folder, const std::function<bool()>& check) {
    if (::getuid() != 0) return check();
    constexpr unsigned nobody = 65534;
    if (::chown(folder.path().c_str(), nobody, nobody) != 0) return false;
    const auto child = ::fork();
    if (child == 0) ::_exit(::setgid(nobody) == 0 && ::setuid(nobody) == 0 && check() ? 0 : 1);
    int status = -1;
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

} // namespace tallyfoot::testing
