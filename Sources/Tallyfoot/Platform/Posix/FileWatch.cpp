#include "Tallyfoot/Platform/Posix/FileWatch.h"

#include <sys/inotify.h>
#include <sys/ioctl.h>

#include <string>

namespace tallyfoot {

FileWatch::FileWatch(int file) : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (!events_) return;
    // The open file itself, whatever its path leads to by now. A removed name shows in the file's
    // attributes, because its count of links is one of them.
    const auto path = "/proc/self/fd/" + std::to_string(file);
    if (::inotify_add_watch(events_.number(), path.c_str(), IN_ATTRIB | IN_MOVE_SELF) < 0) events_ = FileDescriptor();
}

bool FileWatch::isQuiet() const noexcept {
    // Events are counted, never read: a child of this process would take them away from it.
    int waiting = 0;
    return events_ && ::ioctl(events_.number(), FIONREAD, &waiting) == 0 && waiting == 0;
}

} // namespace tallyfoot
