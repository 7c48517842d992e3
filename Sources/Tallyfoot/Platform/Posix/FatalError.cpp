#include "Tallyfoot/Platform/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace tallyfoot {

void fatalError(std::string_view message) noexcept {
    std::fprintf(stderr, "Tallyfoot: fatal error: %.*s\n", static_cast<int>(message.size()), message.data());
    std::abort();
}

} // namespace tallyfoot
