#include "Support/OrdinaryUser.h"
#include "Support/ResourceLimit.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Platform/Posix/PosixFileManager.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <system_error>
#include <thread>

namespace tallyfoot::testing {

namespace {

using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

TEST(PosixFileHandle, AnAppendThatDoesNotFitLeavesTheFileAsItWas) {
    TemporaryFolder folder;
    writeFile(folder / "a", "0123456789");
    PosixFileManager files;
    auto handle = files.fileHandleForWriting(folder / "a");
    ASSERT_TRUE(handle);
    ASSERT_TRUE(handle.value()->append("first"));
    const ResourceLimit limit(RLIMIT_FSIZE, 20);
    const auto appended = handle.value()->append("too long for the file");
    ASSERT_FALSE(appended);
    EXPECT_THAT(appended.error().description, HasSubstr("File too large"));
    EXPECT_EQ(readFile(folder / "a"), "0123456789first");
    EXPECT_TRUE(handle.value()->append("fits!"));
    EXPECT_EQ(readFile(folder / "a"), "0123456789firstfits!");
}

TEST(PosixFileHandle, TheLimitOfTheProcessThatItIsOpenedUnderEndsNoHost) {
    TemporaryFolder folder;
    writeFile(folder / "a", "0123456789");
    const ResourceLimit limit(RLIMIT_FSIZE, 20);
    PosixFileManager files;
    auto handle = files.fileHandleForWriting(folder / "a");
    ASSERT_TRUE(handle);
    ASSERT_TRUE(handle.value()->append("first"));
    EXPECT_FALSE(handle.value()->append("too long for the file"));
    EXPECT_EQ(readFile(folder / "a"), "0123456789first");
    EXPECT_TRUE(handle.value()->append("fits!"));
    EXPECT_FALSE(handle.value()->append("."));
    EXPECT_EQ(readFile(folder / "a"), "0123456789firstfits!");
}

TEST(PosixFileManager, TheLimitOfTheProcessEndsNoHostThatWritesAWholeFile) {
    TemporaryFolder folder;
    const ResourceLimit limit(RLIMIT_FSIZE, 20);
    EXPECT_FALSE(PosixFileManager().writeAtomically(folder / "a", std::string(21, 'x')));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(PosixFileHandle, TheFirstAppendOfAHandleIsWholeOrNotAtAllToo) {
    TemporaryFolder folder;
    writeFile(folder / "a", "0123456789");
    PosixFileManager files;
    auto handle = files.fileHandleForWriting(folder / "a");
    ASSERT_TRUE(handle);
    const ResourceLimit limit(RLIMIT_FSIZE, 15);
    EXPECT_FALSE(handle.value()->append("too long"));
    EXPECT_EQ(readFile(folder / "a"), "0123456789");
}

TEST(PosixFileHandle, AFailedTruncateIsReported) {
    TemporaryFolder folder;
    writeFile(folder / "a", "0123456789");
    PosixFileManager files;
    auto handle = files.fileHandleForWriting(folder / "a");
    ASSERT_TRUE(handle);
    EXPECT_FALSE(handle.value()->truncate(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ(readFile(folder / "a"), "0123456789");
}

TEST(PosixFileHandle, LooksForItsFileEachTimeWhereTheSystemHasNoWatchToGive) {
    TemporaryFolder folder;
    writeFile(folder / "a", "");
    PosixFileManager files;
    auto handle = files.fileHandleForWriting(folder / "a");
    ASSERT_TRUE(handle);
    ASSERT_TRUE(handle.value()->size()); // a sanitizer's first look at an object wants an open file
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none{0, limit.rlim_max}; // a watch is an open file, too
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_TRUE(handle.value()->isInPlace());
    EXPECT_TRUE(handle.value()->isInPlace());
    EXPECT_TRUE(files.removeItem(folder / "a"));
    EXPECT_FALSE(handle.value()->isInPlace());
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

TEST(PosixFileHandle, IsInPlaceWhileItsFolderMayNotBeEntered) {
    TemporaryFolder folder;
    EXPECT_TRUE(asOrdinaryUser(folder, [&] {
        PosixFileManager files;
        if (!files.createDirectory(folder / "inner") || !files.writeAtomically(folder / "inner/a", {})) return false;
        auto handle = files.fileHandleForWriting(folder / "inner/a");
        if (!handle || !handle.value()->isInPlace()) return false;
        std::filesystem::permissions(folder / "inner/a", std::filesystem::perms::owner_read); // worth another look
        std::filesystem::permissions(folder / "inner", std::filesystem::perms::none);
        const bool isInPlace = handle.value()->isInPlace();
        std::filesystem::permissions(folder / "inner", std::filesystem::perms::owner_all);
        return isInPlace && files.removeItem(folder / "inner/a") && !handle.value()->isInPlace();
    }));
}

// That this process has open.
std::ptrdiff_t watches() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::count_if(begin(files), end(files), [](const auto& file) {
        std::error_code gone;
        return std::filesystem::read_symlink(file, gone).string().find("inotify") != std::string::npos;
    });
}

TEST(PosixFileHandle, TakesNoWatchWhileItsFolderMayNotBeEntered) {
    TemporaryFolder folder;
    EXPECT_TRUE(asOrdinaryUser(folder, [&] {
        PosixFileManager files;
        if (!files.createDirectory(folder / "inner") || !files.writeAtomically(folder / "inner/a", {})) return false;
        auto handle = files.fileHandleForWriting(folder / "inner/a");
        if (!handle || !handle.value()->isInPlace() || watches() != 1) return false;
        std::filesystem::permissions(folder / "inner/a", std::filesystem::perms::owner_read); // worth another look
        std::filesystem::permissions(folder / "inner", std::filesystem::perms::none);
        bool isInPlace = handle.value()->isInPlace();
        while (watches() != 0) std::this_thread::yield(); // the former one ends in its own time
        std::ptrdiff_t taken = 0;
        for (int time = 0; time < 50; ++time) {
            isInPlace = isInPlace && handle.value()->isInPlace();
            taken += watches();
        }
        std::filesystem::permissions(folder / "inner", std::filesystem::perms::owner_all);
        return isInPlace && taken == 0 && handle.value()->isInPlace() && watches() == 1;
    }));
}

TEST(PosixFileHandle, FilesThatAreOpenedAgainAndAgainTakeFewWatches) {
    TemporaryFolder folder;
    writeFile(folder / "a", "");
    PosixFileManager files;
    std::ptrdiff_t most = 0;
    for (int time = 0; time < 300; ++time) {
        auto handle = files.fileHandleForWriting(folder / "a");
        ASSERT_TRUE(handle && handle.value()->isInPlace());
        most = std::max(most, watches());
    }
    EXPECT_LE(most, 5);
    EXPECT_GE(most, 1);
}

TEST(PosixFileManager, AWriteThatDoesNotFitKeepsTheOldFileAndLeavesNothingBeside) {
    TemporaryFolder folder;
    writeFile(folder / "a", "old");
    const ResourceLimit limit(RLIMIT_FSIZE, 100);
    PosixFileManager files;
    EXPECT_FALSE(files.writeAtomically(folder / "a", std::string(101, 'x')));
    EXPECT_EQ(readFile(folder / "a"), "old");
    EXPECT_THAT(files.contentsOfDirectory(folder.path().string()).value(), UnorderedElementsAre("a"));
}

TEST(PosixFileManager, AnEmptyFileIsMadeUnderItsOwnNameSoThatAKillLeavesNothingBeside) {
    TemporaryFolder folder;
    const int events = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(::inotify_add_watch(events, folder.path().c_str(), IN_CREATE | IN_MOVED_TO), 0);
    EXPECT_TRUE(PosixFileManager().writeAtomically(folder / "a", {}));
    alignas(inotify_event) std::array<char, 4096> buffer{};
    const auto count = ::read(events, buffer.data(), buffer.size());
    ::close(events);
    const auto* event = reinterpret_cast<const inotify_event*>(buffer.data());
    ASSERT_EQ(count, static_cast<ssize_t>(sizeof *event + event->len)); // one event
    EXPECT_STREQ(event->name, "a");
}

TEST(PosixFileManager, ANamedPipeIsRefusedAndNotWaitedFor) {
    TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    PosixFileManager files;
    EXPECT_FALSE(files.contents(folder / "pipe"));
    EXPECT_FALSE(files.fileHandleForWriting(folder / "pipe"));
    EXPECT_TRUE(files.fileExists(folder / "pipe"));
    EXPECT_TRUE(files.removeItem(folder / "pipe"));
}

TEST(PosixFileManager, ReadsAFileWhoseSizeIsNotKnownBeforehand) {
    EXPECT_THAT(PosixFileManager().contents("/proc/self/status").value(), HasSubstr("Pid:"));
}

TEST(PosixFileManager, WhatItCreatesIsForTheUserAlone) {
    TemporaryFolder folder;
    PosixFileManager files;
    ASSERT_TRUE(files.createDirectory(folder / "a"));
    ASSERT_TRUE(files.writeAtomically(folder / "a/b", "1"));

    struct stat status {};

    ASSERT_EQ(::stat((folder / "a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0077U, 0U);
    ASSERT_EQ(::stat((folder / "a/b").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0077U, 0U);
}

TEST(PosixFileManager, HandlesAreNotInherited) {
    TemporaryFolder folder;
    writeFile(folder / "a", "");
    const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC); // the number that the handle will get
    ::close(next);
    PosixFileManager files;
    auto handle = files.fileHandleForWriting(folder / "a");
    ASSERT_TRUE(handle);
    EXPECT_EQ(::fcntl(next, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(PosixFileManager, SubpathsLeaveOutWhatCannotBeEntered) {
    TemporaryFolder folder;
    EXPECT_TRUE(asOrdinaryUser(folder, [&] {
        PosixFileManager files;
        if (!files.createDirectory(folder / "open/inner") || !files.createDirectory(folder / "closed/inner"))
            return false;
        std::filesystem::permissions(folder / "closed", std::filesystem::perms::none);
        auto subpaths = files.subpathsOfDirectory(folder.path().string()).value();
        std::filesystem::permissions(folder / "closed", std::filesystem::perms::owner_all);
        return ::testing::Matches(UnorderedElementsAre("open", "open/inner", "closed"))(subpaths);
    }));
}

TEST(PosixFileManager, RemovalTakesWhatItCanAndReportsTheRest) {
    TemporaryFolder folder;
    EXPECT_TRUE(asOrdinaryUser(folder, [&] {
        PosixFileManager files;
        if (!files.createDirectory(folder / "top/closed/inner") || !files.createDirectory(folder / "top/open/inner"))
            return false;
        std::filesystem::permissions(folder / "top/closed", std::filesystem::perms::none);
        const auto removed = files.removeItem(folder / "top");
        std::filesystem::permissions(folder / "top/closed", std::filesystem::perms::owner_all);
        return !removed && removed.error().description.find("closed") != std::string::npos
               && files.directoryExists(folder / "top/closed/inner") && !files.fileExists(folder / "top/open");
    }));
}

TEST(PosixFileManager, ApplicationSupportFollowsTheDataHome) {
    ::setenv("XDG_DATA_HOME", "/data/home", 1);
    ::setenv("HOME", "/home/user", 1);
    EXPECT_EQ(PosixFileManager().applicationSupportDirectory(), "/data/home");
}

TEST(PosixFileManager, ARelativeDataHomeCountsAsUnset) {
    ::setenv("XDG_DATA_HOME", "data", 1);
    ::setenv("HOME", "/home/user", 1);
    EXPECT_EQ(PosixFileManager().applicationSupportDirectory(), "/home/user/.local/share");
    ::setenv("XDG_DATA_HOME", "", 1);
    EXPECT_EQ(PosixFileManager().applicationSupportDirectory(), "/home/user/.local/share");
}

TEST(PosixFileManager, ApplicationSupportStaysWhenTheEnvironmentChanges) {
    PosixFileManager files;
    ::setenv("XDG_DATA_HOME", "/data/home", 1);
    EXPECT_EQ(files.applicationSupportDirectory(), "/data/home");
    ::setenv("XDG_DATA_HOME", "/elsewhere", 1);
    EXPECT_EQ(files.applicationSupportDirectory(), "/data/home");
}

TEST(PosixFileManager, WithoutAHomeThePasswdEntryTells) {
    ::unsetenv("XDG_DATA_HOME");
    ::setenv("HOME", "relative", 1);
    const auto found = PosixFileManager().applicationSupportDirectory();
    const passwd* entry = ::getpwuid(::getuid());
    if (entry == nullptr) GTEST_SKIP() << "this user has no passwd entry";
    ASSERT_TRUE(found);
    EXPECT_EQ(std::filesystem::path(*found), std::filesystem::path(entry->pw_dir) / ".local/share");
}

TEST(PosixFileManager, WithoutAnyHomeThereIsNoApplicationSupport) {
    if (::getuid() != 0) GTEST_SKIP() << "only root can become a user without a passwd entry";
    const auto child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::unsetenv("XDG_DATA_HOME");
        ::unsetenv("HOME");
        ::_exit(::setuid(3'000'000'000U) == 0 && !PosixFileManager().applicationSupportDirectory() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

} // namespace

} // namespace tallyfoot::testing
