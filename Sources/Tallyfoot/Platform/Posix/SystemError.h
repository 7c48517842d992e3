#pragma once

#include "Tallyfoot/Platform/Result.h"

#include <cerrno>
#include <string_view>

namespace tallyfoot {

// One line such as "Cannot open 1.log: No such file or directory", in English whatever the locale.
// Of the path only the last component is named. Any thread.
Error systemError(std::string_view action, std::string_view path, int number);

// Repeats a system call for as long as signals interrupt it.
template <class Call>
auto retrying(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

} // namespace tallyfoot
