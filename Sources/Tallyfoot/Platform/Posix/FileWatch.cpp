#include "Tallyfoot/Platform/Posix/FileWatch.h"

#include "Tallyfoot/Platform/Posix/DetachedThread.h"

#include <sys/inotify.h>
#include <sys/ioctl.h>

#include <exception>
#include <memory>
#include <utility>

namespace tallyfoot {

FileWatch::FileWatch(int file, const std::string& path) : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (!events_) return;
    // The open file itself, whatever its path leads to by now. A removed name shows in the file's
    // attributes, because its count of links is one of them.
    const auto opened = "/proc/self/fd/" + std::to_string(file);
    if (::inotify_add_watch(events_.number(), opened.c_str(), IN_ATTRIB | IN_MOVE_SELF) < 0) {
        events_ = FileDescriptor();
        return;
    }
    // A folder with a file in it is not removed, but it may be moved away with it. A link that stands for
    // one may come to lead elsewhere. Not the attributes: they would be those of all that is in the folder.
    for (auto slash = path.rfind('/'); slash != path.npos && slash > 0; slash = path.rfind('/', slash - 1)) {
        const auto folder = path.substr(0, slash);
        constexpr auto itself = IN_MOVE_SELF | IN_DELETE_SELF;
        (void)::inotify_add_watch(events_.number(), folder.c_str(), itself);
        (void)::inotify_add_watch(events_.number(), folder.c_str(), itself | IN_DONT_FOLLOW);
    }
}

FileWatch::~FileWatch() {
    if (!events_) return;
    // The close waits for the system's processors to let go of the watches, often for ten milliseconds
    // and more. Whoever ends a log file holds the turn that log calls are waiting for.
    try {
        auto events = std::make_shared<FileDescriptor>(std::move(events_));
        (void)startDetachedThread("FileWatch", [events = std::move(events)]() mutable { events.reset(); });
    } catch (const std::exception&) { // no memory for a thread: closed already
    }
}

bool FileWatch::isQuiet() const noexcept {
    // Events are counted, never read: a child of this process would take them away from it.
    int waiting = 0;
    return events_ && ::ioctl(events_.number(), FIONREAD, &waiting) == 0 && waiting == 0;
}

} // namespace tallyfoot
