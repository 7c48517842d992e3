#include "Tallyfoot/Platform/Posix/FileWatch.h"

#include "Tallyfoot/Platform/Posix/DetachedThread.h"

#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <utility>

namespace tallyfoot {

namespace {

// A removed name shows in the attributes of what it named, because the count of names is one of them.
constexpr std::uint32_t nameChanges = IN_ATTRIB | IN_MOVE_SELF;

// How many watches are ending at this moment. Where a file is opened for each record, as on a full disk, there
// would soon be all that a user may have; the user's other programs need theirs.
std::atomic<int> endingCount = 0;
constexpr int mostEnding = 4;

struct Ending {
    explicit Ending(FileDescriptor watch) : events(std::move(watch)) { ++endingCount; }
    ~Ending() {
        { const auto closed = std::move(events); }
        --endingCount;
    }
    Ending(const Ending&) = delete;
    Ending& operator=(const Ending&) = delete;

    FileDescriptor events;
};

bool isLink(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

} // namespace

FileWatch::FileWatch(int file, const std::string& path) {
    if (endingCount < mostEnding) events_ = FileDescriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!events_) return;
    const auto watch = [&](const std::string& what, std::uint32_t changes) {
        return ::inotify_add_watch(events_.number(), what.c_str(), changes) >= 0;
    };
    // The open file itself, whatever its path leads to by now.
    if (!watch("/proc/self/fd/" + std::to_string(file), nameChanges)) {
        events_ = FileDescriptor();
        return;
    }
    for (auto slash = path.rfind('/'); slash != path.npos && slash > 0; slash = path.rfind('/', slash - 1)) {
        const auto folder = path.substr(0, slash);
        // With a file in it, it is not removed, but it may be moved away. Its attributes are not asked for,
        // since those of all that is in it would come along.
        (void)watch(folder, IN_MOVE_SELF);
        if (isLink(folder)) (void)watch(folder, nameChanges | IN_DONT_FOLLOW);
    }
}

FileWatch::~FileWatch() {
    if (!events_) return;
    // The close waits for the system's processors to let go of the watches, often for ten milliseconds
    // and more. Whoever ends a log file holds the turn that log calls are waiting for.
    try {
        auto ending = std::make_shared<Ending>(std::move(events_));
        (void)startDetachedThread("FileWatch", [ending = std::move(ending)]() mutable { ending.reset(); });
    } catch (const std::exception&) { // no memory for a thread: closed already
    }
}

bool FileWatch::isQuiet() const noexcept {
    // Events are counted, never read: a child of this process would take them away from it.
    int waiting = 0;
    return events_ && ::ioctl(events_.number(), FIONREAD, &waiting) == 0 && waiting == 0;
}

} // namespace tallyfoot
