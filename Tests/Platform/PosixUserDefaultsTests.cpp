#include "Support/OrdinaryUser.h"
#include "Support/ResourceLimit.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Platform/Posix/FileLock.h"
#include "Tallyfoot/Platform/Posix/PosixFileManager.h"
#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"
#include "Tallyfoot/Platform/Posix/PosixUserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tallyfoot::testing {

namespace {

using namespace std::string_literals;
using ::testing::UnorderedElementsAre;

PropertyList text(std::string characters) { return {std::move(characters)}; }

class PosixUserDefaultsTest : public ::testing::Test {
protected:
    std::string path() const { return folder_ / "store"; }
    std::string path(const std::string& name) const { return folder_ / ("store/" + name); }
    std::shared_ptr<PosixUserDefaults> open() const {
        return std::make_shared<PosixUserDefaults>(path(), std::make_shared<PosixPropertyLists>());
    }
    std::vector<std::string> names() const { return PosixFileManager().contentsOfDirectory(path()).value(); }

    TemporaryFolder folder_;
};

TEST_F(PosixUserDefaultsTest, EveryKindOfValueOutlivesItsStore) {
    const PropertyList dictionary{PropertyList::Dictionary{{"evtId", text("1")}, {"crashreason", text("SIGSEGV")}}};
    {
        const auto defaults = open();
        defaults->setInteger("EventCount", 41);
        defaults->setInteger("EventCount", 42);
        defaults->setReal("EventLastUpload", 1709820309.5);
        defaults->setObject("flag", {true});
        defaults->setObject("User", text("user-1"));
        defaults->setObject("Applications", {PropertyList::Data{"bplist00"}});
        defaults->setObject("crash", dictionary);
    }
    const auto defaults = open();
    EXPECT_EQ(defaults->integer("EventCount"), 42);
    EXPECT_EQ(defaults->real("EventLastUpload"), 1709820309.5);
    EXPECT_EQ(defaults->object("flag"), PropertyList{true});
    EXPECT_EQ(defaults->object("User"), text("user-1"));
    EXPECT_EQ(defaults->object("Applications"), PropertyList{PropertyList::Data{"bplist00"}});
    EXPECT_EQ(defaults->object("crash"), dictionary);
}

TEST_F(PosixUserDefaultsTest, ARemovedValueStaysRemoved) {
    open()->setInteger("number", 1);
    open()->setObject("text", text("1"));
    open()->remove("number");
    open()->remove("text");
    EXPECT_EQ(open()->object("number"), std::nullopt);
    EXPECT_EQ(open()->object("text"), std::nullopt);
}

TEST_F(PosixUserDefaultsTest, ReadingMakesNothing) {
    EXPECT_EQ(open()->integer("key"), 0);
    open()->remove("key");
    EXPECT_TRUE(open()->synchronize());
    EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(PosixUserDefaultsTest, LeavesNothingBesideItsFiles) {
    const auto defaults = open();
    defaults->setInteger("number", 1);
    defaults->setObject("text", text("1"));
    EXPECT_THAT(names(), UnorderedElementsAre(".lock", "numbers", "text.plist"));
    defaults->setInteger("text", 1);
    EXPECT_THAT(names(), UnorderedElementsAre(".lock", "numbers"));
}

TEST_F(PosixUserDefaultsTest, AValueFileIsAPropertyListOfTheKeysName) {
    open()->setObject("a key", text("value"));
    EXPECT_EQ(PosixPropertyLists().propertyList(readFile(path("a%20key.plist"))), text("value"));
}

TEST_F(PosixUserDefaultsTest, ItsFilesAreForTheUserAlone) {
    open()->setInteger("number", 1);
    open()->setObject("text", text("1"));
    for (const auto& name : names()) {
        struct stat status {};
        ASSERT_EQ(::stat(path(name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0077U, 0U) << name;
    }
}

TEST_F(PosixUserDefaultsTest, AllRoomForNumbersIsThereFromTheStart) {
    open()->setInteger("number", 1);
    struct stat status {};
    ASSERT_EQ(::stat(path("numbers").c_str(), &status), 0);
    EXPECT_GE(status.st_blocks * 512, status.st_size);
}

// Two at once

TEST_F(PosixUserDefaultsTest, TwoStoresOfOneFolderSeeEachOthersValuesAtOnce) {
    const auto one = open();
    const auto two = open();
    EXPECT_EQ(two->integer("key"), 0);
    one->setInteger("key", 1);
    EXPECT_EQ(two->integer("key"), 1);
    two->setInteger("key", 2);
    EXPECT_EQ(one->integer("key"), 2);
    one->setObject("key", text("three"));
    EXPECT_EQ(two->object("key"), text("three"));
    two->setReal("key", 4);
    EXPECT_EQ(one->object("key"), PropertyList{4.0});
    one->remove("key");
    EXPECT_EQ(two->object("key"), std::nullopt);
}

int statusOf(pid_t child) {
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return status;
}

TEST_F(PosixUserDefaultsTest, TwoProcessesWriteAtOnceAndLoseNothing) {
    constexpr int processes = 3;
    constexpr int rounds = 150;
    std::vector<pid_t> children;
    for (int index = 0; index < processes; ++index) {
        children.push_back(::fork());
        ASSERT_GE(children.back(), 0);
        if (children.back() != 0) continue;
        const auto defaults = open();
        const auto own = std::to_string(index);
        bool isSound = true;
        for (int round = 0; round < rounds; ++round) {
            defaults->setInteger("number " + own, round);
            defaults->setObject("text " + own, text(std::to_string(round)));
            if (round % 2 == 0)
                defaults->setInteger("shared", index);
            else
                defaults->setObject("shared", text(own));
            const auto shared = defaults->object("shared");
            isSound = isSound && shared && defaults->integer("shared") < processes
                      && defaults->integer("number " + own) == round
                      && defaults->object("text " + own) == text(std::to_string(round));
        }
        ::_exit(isSound && defaults->synchronize() ? 0 : 1);
    }
    for (const auto child : children) EXPECT_EQ(statusOf(child), 0);
    const auto defaults = open();
    for (int index = 0; index < processes; ++index) {
        EXPECT_EQ(defaults->integer("number " + std::to_string(index)), rounds - 1);
        EXPECT_EQ(defaults->object("text " + std::to_string(index)), text(std::to_string(rounds - 1)));
    }
}

// Kills

// What the child writes in its nth step. The kinds follow each other in every order.
PropertyList stepped(std::int64_t step) {
    constexpr std::array kinds{0, 1, 2, 0, 2, 1, 0, 0, 2, 2, 1, 1};
    switch (kinds[static_cast<std::size_t>(step) % kinds.size()]) {
    case 0: return {step};
    case 1: return {static_cast<double>(step) + 0.5};
    default: return text(std::to_string(step) + std::string(static_cast<std::size_t>(step % 7) * 1000, '.'));
    }
}

TEST_F(PosixUserDefaultsTest, AKillAtAnyInstantKeepsTheLastCompletedWrite) {
    std::int64_t first = 0;
    for (int round = 0; round < 60; ++round) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe(ends.data()), 0);
        const auto child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::close(ends[0]);
            const auto defaults = open();
            for (std::int64_t step = first;; ++step) {
                defaults->setObject("key", stepped(step));
                if (::write(ends[1], &step, sizeof step) != sizeof step) ::_exit(1);
            }
        }
        ::close(ends[1]);
        // The kill comes while the child is somewhere behind the step that was read.
        std::int64_t last = first - 1;
        for (int reads = 0; reads <= round % 20; ++reads) ASSERT_EQ(::read(ends[0], &last, sizeof last), 8);
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        ASSERT_TRUE(WIFSIGNALED(statusOf(child)));
        while (::read(ends[0], &last, sizeof last) == sizeof last) {
        } // what it had completed meanwhile
        ::close(ends[0]);

        const auto found = open()->object("key");
        ASSERT_TRUE(found == stepped(last) || found == stepped(last + 1)) << "after step " << last;
        EXPECT_EQ(open()->object("key"), found);
        first = last + 2;
    }
    const auto defaults = open();
    defaults->setObject("key", text("usable"));
    EXPECT_TRUE(defaults->synchronize());
    EXPECT_EQ(open()->object("key"), text("usable"));
}

TEST_F(PosixUserDefaultsTest, WhatAKilledWriterLeftBehindDoesNoHarm) {
    writeFile(path(".value.new"), "half a va");
    writeFile(path(".numbers.new"), "half a ta");
    const auto defaults = open();
    defaults->setInteger("number", 1);
    defaults->setObject("text", text("1"));
    EXPECT_THAT(names(), UnorderedElementsAre(".lock", "numbers", "text.plist"));
}

// The writer of a number was killed between storing it and removing the former text.
TEST_F(PosixUserDefaultsTest, ANumberCountsBeforeAFormerTextThatIsStillThere) {
    const auto defaults = open();
    defaults->setInteger("key", 7);
    writeFile(path("key.plist"), PosixPropertyLists().data(text("former")));
    EXPECT_EQ(open()->object("key"), PropertyList{std::int64_t{7}});
    defaults->remove("key");
    EXPECT_EQ(open()->object("key"), std::nullopt);
}

// Damage

void expectANewTable(const std::function<std::shared_ptr<PosixUserDefaults>()>& open) {
    EXPECT_EQ(open()->integer("number"), 0);
    EXPECT_EQ(open()->object("text"), text("kept"));
    open()->setInteger("number", 2);
    EXPECT_TRUE(open()->synchronize());
    EXPECT_EQ(open()->integer("number"), 2);
}

TEST_F(PosixUserDefaultsTest, ANumbersFileThatIsNoneOfOursIsSetAside) {
    open()->setObject("text", text("kept"));
    const auto reopen = [this] { return open(); };
    for (const auto* damaged : {"", "short", "#!/bin/sh\nexit\n"}) {
        writeFile(path("numbers"), damaged);
        expectANewTable(reopen);
        EXPECT_EQ(readFile(path("numbers.damaged")), damaged);
    }
    writeFile(path("numbers"), std::string(std::filesystem::file_size(path("numbers")), 'x'));
    expectANewTable(reopen);
}

TEST_F(PosixUserDefaultsTest, ANumbersFileWithDamagedSlotsIsSetAside) {
    open()->setObject("text", text("kept"));
    open()->setInteger("number", 1);
    auto bytes = readFile(path("numbers"));
    bytes.replace(bytes.size() / 2, 4096, std::string(4096, '\xA5'));
    writeFile(path("numbers"), bytes);
    expectANewTable([this] { return open(); });
    EXPECT_EQ(readFile(path("numbers.damaged")), bytes);
}

TEST_F(PosixUserDefaultsTest, AShortenedNumbersFileIsSetAside) {
    open()->setObject("text", text("kept"));
    open()->setInteger("number", 1);
    std::filesystem::resize_file(path("numbers"), 4096);
    expectANewTable([this] { return open(); });
}

TEST_F(PosixUserDefaultsTest, AFolderInThePlaceOfTheNumbersFileIsSetAside) {
    open()->setObject("text", text("kept"));
    std::filesystem::create_directories(path("numbers/inner"));
    expectANewTable([this] { return open(); });
    EXPECT_TRUE(std::filesystem::exists(path("numbers.damaged/inner")));
}

TEST_F(PosixUserDefaultsTest, ADamagedValueFileReadsAsNothingAndCanBeReplaced) {
    for (const auto* damaged : {"", "bplist00", "bplist00\xD1\x01\x02", "<plist><string>no end"}) {
        writeFile(path("key.plist"), damaged);
        EXPECT_EQ(open()->object("key"), std::nullopt);
        EXPECT_EQ(open()->integer("key"), 0);
    }
    open()->setObject("key", text("new"));
    EXPECT_EQ(open()->object("key"), text("new"));
}

TEST_F(PosixUserDefaultsTest, AValueFileThatIsFarTooLargeIsNotTakenIntoMemory) {
    const auto usedMemory = [] {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss; // in KiB
    };
    open()->setObject("crash", text("former"));
    std::filesystem::resize_file(path("crash.plist"), std::uintmax_t{1} << 29U);
    const auto before = usedMemory();
    EXPECT_EQ(open()->object("crash"), std::nullopt);
    EXPECT_LT(usedMemory() - before, 1 << 17);
}

TEST_F(PosixUserDefaultsTest, AFolderInThePlaceOfAValueFileKeepsTheValueInMemory) {
    std::filesystem::create_directories(path("key.plist/inner"));
    const auto defaults = open();
    EXPECT_EQ(defaults->object("key"), std::nullopt);
    defaults->setObject("key", text("new"));
    EXPECT_EQ(defaults->object("key"), text("new"));
    EXPECT_FALSE(defaults->synchronize());
    std::filesystem::remove_all(path("key.plist"));
    EXPECT_TRUE(defaults->synchronize());
    EXPECT_EQ(open()->object("key"), text("new"));
}

TEST_F(PosixUserDefaultsTest, ARemovedFolderIsMadeAgain) {
    const auto defaults = open();
    defaults->setInteger("number", 1);
    defaults->setObject("text", text("1"));
    std::filesystem::remove_all(path());
    defaults->setObject("text", text("2"));
    EXPECT_EQ(defaults->object("text"), text("2"));
    EXPECT_EQ(open()->object("text"), text("2"));
    EXPECT_EQ(defaults->integer("number"), 0) << "it went with the folder";
    defaults->setInteger("number", 3);
    EXPECT_EQ(open()->integer("number"), 3);
}

// Where nothing can be written

TEST_F(PosixUserDefaultsTest, WithAFileInThePlaceOfTheFolderValuesAreKeptInMemory) {
    writeFile(path(), "in the way");
    const auto defaults = open();
    EXPECT_TRUE(defaults->synchronize());
    defaults->setInteger("number", 1);
    defaults->setInteger("number", 2);
    defaults->setObject("text", text("two"));
    defaults->setObject("other", text("other"));
    defaults->remove("other");
    EXPECT_EQ(defaults->integer("number"), 2);
    EXPECT_EQ(defaults->object("text"), text("two"));
    EXPECT_EQ(defaults->object("other"), std::nullopt);
    EXPECT_FALSE(defaults->synchronize());
    EXPECT_EQ(readFile(path()), "in the way");

    std::filesystem::remove(path());
    EXPECT_TRUE(defaults->synchronize());
    EXPECT_EQ(open()->integer("number"), 2);
    EXPECT_EQ(open()->object("text"), text("two"));
}

TEST_F(PosixUserDefaultsTest, WithoutAFolderValuesAreKeptInMemory) {
    PosixUserDefaults defaults("", std::make_shared<PosixPropertyLists>());
    EXPECT_EQ(defaults.object("key"), std::nullopt);
    defaults.setInteger("key", 1);
    EXPECT_EQ(defaults.integer("key"), 1);
    defaults.setObject("key", text("one"));
    EXPECT_EQ(defaults.object("key"), text("one"));
    EXPECT_FALSE(defaults.synchronize());
}

TEST_F(PosixUserDefaultsTest, AReadOnlyStoreIsReadAndItsChangesAreKeptInMemory) {
    EXPECT_TRUE(asOrdinaryUser(folder_, [this] {
        open()->setInteger("number", 1);
        open()->setObject("text", text("1"));
        namespace fs = std::filesystem;
        for (const auto& name : names()) fs::permissions(path(name), fs::perms::owner_read);
        fs::permissions(path(), fs::perms::owner_read | fs::perms::owner_exec);
        const auto defaults = open();
        const bool isRead = defaults->integer("number") == 1 && defaults->object("text") == text("1");
        defaults->setInteger("number", 2);
        defaults->setObject("text", text("2"));
        const bool isKept =
            defaults->integer("number") == 2 && defaults->object("text") == text("2") && !defaults->synchronize();
        const bool isUnchanged = open()->integer("number") == 1 && open()->object("text") == text("1");
        fs::permissions(path(), fs::perms::owner_all);
        for (const auto& name : names()) fs::permissions(path(name), fs::perms::owner_all);
        return isRead && isKept && isUnchanged && defaults->synchronize() && open()->integer("number") == 2
               && open()->object("text") == text("2");
    }));
}

TEST_F(PosixUserDefaultsTest, AFullDiskKeepsTheFormerValueOnItAndTheNewOneInMemory) {
    const auto defaults = open();
    defaults->setObject("text", text("former"));
    defaults->setInteger("number", 1);
    const ResourceLimit limit(RLIMIT_FSIZE, 1000);
    defaults->setObject("text", text(std::string(2000, 'x')));
    EXPECT_FALSE(defaults->synchronize());
    EXPECT_EQ(defaults->object("text"), text(std::string(2000, 'x')));
    EXPECT_EQ(open()->object("text"), text("former"));
    defaults->setInteger("number", 2); // its room was there before
    EXPECT_EQ(open()->integer("number"), 2);
}

TEST_F(PosixUserDefaultsTest, WithoutRoomForTheTableNumbersAreFiles) {
    const ResourceLimit limit(RLIMIT_FSIZE, 1000);
    open()->setInteger("number", 5);
    EXPECT_EQ(open()->integer("number"), 5);
    EXPECT_TRUE(open()->synchronize());
    EXPECT_THAT(names(), UnorderedElementsAre(".lock", "number.plist"));
}

TEST_F(PosixUserDefaultsTest, AValueTooLargeToBeReadBackIsKeptInMemory) {
    const auto defaults = open();
    const auto large = text(std::string(PosixPropertyLists::maximumSize, 'x'));
    defaults->setObject("key", text("former"));
    defaults->setObject("key", large);
    EXPECT_EQ(defaults->object("key"), large);
    EXPECT_FALSE(defaults->synchronize());
    EXPECT_EQ(open()->object("key"), text("former"));
}

TEST_F(PosixUserDefaultsTest, AWriterThatHoldsTheLockForEverIsNotWaitedForForEver) {
    const auto defaults = open();
    defaults->setObject("key", text("former"));
    const FileLock stopped(path(".lock"));
    ASSERT_TRUE(stopped);
    const auto start = std::chrono::steady_clock::now();
    defaults->setObject("key", text("new"));
    for (int number = 0; number < 100; ++number) EXPECT_FALSE(defaults->synchronize());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    EXPECT_EQ(defaults->object("key"), text("new"));
    EXPECT_EQ(open()->object("key"), text("former"));
}

// Crash hooks

SignalSafeStore* crashStore = nullptr; // NOLINT: what a signal handler knows of the world

class PosixSignalSafeStoreTest : public PosixUserDefaultsTest {
protected:
    // The child ends by the crash, in whose handler it stores its reason.
    pid_t crashing(const std::function<void()>& crash) {
        const auto child = ::fork();
        if (child != 0) return child;
        const auto defaults = open();
        const auto store = defaults->makeSignalSafeStore("crash");
        crashStore = store.get();
        ::signal(SIGSEGV, [](int) {
            const std::array<SignalSafeStore::Text, 1> reason{{{"crashreason", "SIGSEGV"}}};
            ::_exit(crashStore->store(reason) ? 7 : 8);
        });
        crash();
        ::_exit(9);
    }
};

TEST_F(PosixSignalSafeStoreTest, StoresInAHandlerWhateverTheCrashingThreadHolds) {
    const auto child = crashing([this] {
        const FileLock held(path(".lock"));
        ::raise(SIGSEGV);
    });
    const int status = statusOf(child);
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_EQ(open()->object("crash"), (PropertyList{PropertyList::Dictionary{{"crashreason", text("SIGSEGV")}}}));
    open()->remove("crash");
    EXPECT_EQ(open()->object("crash"), std::nullopt);
}

TEST_F(PosixSignalSafeStoreTest, WhatIsNoCharacterBecomesAReplacement) {
    const auto defaults = open();
    const auto store = defaults->makeSignalSafeStore("crash");
    const auto odd = "a\0b\x01\x7F\xFF\xC0\xAF\xED\xA0\x80\xEF\xBF\xBF\xF5z\xE2\x82"s;
    const std::array<SignalSafeStore::Text, 1> texts{{{"k", odd}}};
    EXPECT_TRUE(store->store(texts));
    const auto value = defaults->object("crash");
    ASSERT_TRUE(value);
    std::string expected = "a";
    const auto replaced = [&](int count) {
        for (int index = 0; index < count; ++index) expected += "\xEF\xBF\xBD";
    };
    replaced(1);
    expected += "b";
    replaced(1);
    expected += "\x7F";
    replaced(10);
    expected += "z";
    replaced(2);
    EXPECT_EQ(*value, (PropertyList{PropertyList::Dictionary{{"k", text(expected)}}}));
}

TEST_F(PosixSignalSafeStoreTest, ALongTextIsStoredWhole) {
    const auto defaults = open();
    const auto store = defaults->makeSignalSafeStore("crash");
    const std::string reason(100'000, '&');
    const std::array<SignalSafeStore::Text, 1> texts{{{"crashreason", reason}}};
    EXPECT_TRUE(store->store(texts));
    EXPECT_EQ(open()->object("crash"), (PropertyList{PropertyList::Dictionary{{"crashreason", text(reason)}}}));
}

TEST_F(PosixSignalSafeStoreTest, WhatTheDiskRefusesLeavesTheFormerValue) {
    const auto defaults = open();
    defaults->setObject("crash", text("former"));
    const auto store = defaults->makeSignalSafeStore("crash");
    ASSERT_NE(::signal(SIGXFSZ, SIG_IGN), SIG_ERR); // a crash hook runs with every signal blocked
    const ResourceLimit limit(RLIMIT_FSIZE, 1000);
    const std::string reason(2000, 'x');
    const std::array<SignalSafeStore::Text, 1> texts{{{"crashreason", reason}}};
    EXPECT_FALSE(store->store(texts));
    EXPECT_EQ(open()->object("crash"), text("former"));
    EXPECT_THAT(names(), UnorderedElementsAre(".lock", "crash.plist"));
}

TEST_F(PosixSignalSafeStoreTest, WhatAProcessThatWasKilledInAHandlerHasLeftIsRemoved) {
    const auto hidden = [](pid_t process) {
        const auto digits = std::to_string(process);
        return ".value." + std::string(10 - digits.size(), '0') + digits + ".new";
    };
    const auto killed = ::fork();
    if (killed == 0) ::_exit(0);
    (void)statusOf(killed);
    const auto living = hidden(::getpid());
    std::filesystem::create_directory(path());
    for (const auto& name : {hidden(killed), living, ".value.new"s, ".value.new.plist"s}) writeFile(path(name), "<");
    ASSERT_NE(open()->makeSignalSafeStore("crash"), nullptr);
    EXPECT_THAT(names(), UnorderedElementsAre(living, ".value.new", ".value.new.plist"));
}

TEST_F(PosixSignalSafeStoreTest, WithoutAPlaceOnDiskThereIsNone) {
    EXPECT_EQ(PosixUserDefaults("", std::make_shared<PosixPropertyLists>()).makeSignalSafeStore("crash"), nullptr);
    EXPECT_EQ(open()->makeSignalSafeStore(std::string(300, 'k')), nullptr);
    std::filesystem::remove_all(path());
    writeFile(path(), "in the way");
    EXPECT_EQ(open()->makeSignalSafeStore("crash"), nullptr);
}

TEST(FileLock, IsFreeAgainWhenItsHolderIsGone) {
    TemporaryFolder folder;
    { EXPECT_TRUE(FileLock(folder / "lock")); }
    EXPECT_TRUE(FileLock(folder / "lock"));
    EXPECT_FALSE(FileLock(folder / "missing/lock"));
    EXPECT_FALSE(FileLock(folder / "missing/lock").isBusy());
}

} // namespace

} // namespace tallyfoot::testing
