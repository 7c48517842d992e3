#include "RelayFileManager.h"
#include "StorageFixture.h"

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

namespace tallyfoot::testing {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

namespace fs = std::filesystem;

class AppFolderTest : public StorageFixture {
protected:
    std::shared_ptr<AppFolder> folder = makeAppFolder();
};

// Counts what is created and gives every item one creation date.
class OneDate final : public RelayFileManager {
public:
    using RelayFileManager::RelayFileManager;
    Result<FileAttributes> attributesOfItem(const std::string& path) const override {
        auto attributes = RelayFileManager::attributesOfItem(path);
        if (attributes) attributes.value().creationDate = Date(std::chrono::hours(1));
        return attributes;
    }
    Result<void> createDirectory(const std::string& path) override {
        created.push_back(path);
        return RelayFileManager::createDirectory(path);
    }
    std::vector<std::string> created;
};

class NoSupportDirectory final : public RelayFileManager {
public:
    using RelayFileManager::RelayFileManager;
    std::optional<std::string> applicationSupportDirectory() const override { return std::nullopt; }
};

TEST_F(AppFolderTest, FirstStartCreatesAllFiveFoldersInOrder) {
    OneDate disk(fileManager);
    AppFolder(disk, debugConsole(), folder->appInfo()).createFolders();
    const auto root = support / "Tallyfoot";
    EXPECT_THAT(disk.created,
                ElementsAre(root, root + "/Shop", root + "/Shop/Events", root + "/Shop/Upload", root + "/Shop/Backup"));
    for (const auto& path : disk.created) EXPECT_TRUE(fs::is_directory(path)) << path;
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(AppFolderTest, SecondStartCreatesNoneAndReportsNothing) {
    folder->createFolders();
    OneDate disk(fileManager);
    AppFolder(disk, debugConsole(), folder->appInfo()).createFolders();
    EXPECT_THAT(disk.created, IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(AppFolderTest, AFolderThatCannotBeCreatedIsSilentAndTheNextIsStillAttempted) {
    writeFile(path(Folder::events), "in the way");
    folder->createFolders();
    EXPECT_TRUE(fs::is_directory(path(Folder::upload)));
    EXPECT_TRUE(fs::is_directory(path(Folder::backup)));
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(AppFolderTest, PathsAreBelowTheApplicationsName) {
    EXPECT_EQ(folder->path(), support / "Tallyfoot/Shop");
    EXPECT_EQ(folder->path(Folder::events), support / "Tallyfoot/Shop/Events");
    EXPECT_EQ(folder->path(Folder::upload), support / "Tallyfoot/Shop/Upload");
    EXPECT_EQ(folder->path(Folder::backup), support / "Tallyfoot/Shop/Backup");
    EXPECT_EQ(folder->path(Folder::events, "a.log"), support / "Tallyfoot/Shop/Events/a.log");
    EXPECT_EQ(makeAppFolder("My Läden, 2. Stock")->path(), support / "Tallyfoot/My Läden, 2. Stock");
}

TEST_F(AppFolderTest, TheRootStaysWhenTheEnvironmentChanges) {
    const auto before = folder->path();
    ::setenv("XDG_DATA_HOME", (support / "elsewhere").c_str(), 1);
    EXPECT_EQ(folder->path(), before);
    EXPECT_EQ(makeAppFolder()->path(), before);
}

TEST_F(AppFolderTest, NewestFilesComeFirst) {
    folder->createFolders();
    put(Folder::upload, "z.log", "1");
    const auto first = fileManager.attributesOfItem(path(Folder::upload, "z.log")).value().creationDate;
    // The file system's clock ticks coarsely: until it has ticked.
    do {
        fs::remove(path(Folder::upload, "a.log"));
        put(Folder::upload, "a.log", "2");
    } while (fileManager.attributesOfItem(path(Folder::upload, "a.log")).value().creationDate == first);
    EXPECT_THAT(folder->fileNames(Folder::upload), ElementsAre("a.log", "z.log"));
    EXPECT_THAT(folder->filePaths(Folder::upload),
                ElementsAre(path(Folder::upload, "a.log"), path(Folder::upload, "z.log")));
}

TEST_F(AppFolderTest, FilesOfOneMomentAreOrderedByNameTheLaterFirst) {
    folder->createFolders();
    for (const auto* name : {"b.log", "c.log", "a.log"}) put(Folder::events, name, "1");
    OneDate disk(fileManager);
    EXPECT_THAT(AppFolder(disk, debugConsole(), folder->appInfo()).fileNames(Folder::events),
                ElementsAre("c.log", "b.log", "a.log"));
}

TEST_F(AppFolderTest, HiddenFilesAppearInNoListing) {
    for (const auto at : {Folder::upload, Folder::backup}) {
        for (const auto* name : {".a.log", ".b.zip", ".c"}) put(at, name, "1");
    }
    put(Folder::upload, "d.log", "1");
    put(Folder::backup, "d.zip", "1");
    EXPECT_THAT(folder->fileNames(Folder::upload), ElementsAre("d.log"));
    EXPECT_THAT(folder->filePaths(Folder::upload), ElementsAre(path(Folder::upload, "d.log")));
    EXPECT_THAT(folder->nonEmptyLogPaths(Folder::upload), ElementsAre(path(Folder::upload, "d.log")));
    EXPECT_THAT(folder->archivePaths(), ElementsAre(path(Folder::backup, "d.zip")));
}

TEST_F(AppFolderTest, AFolderThatCannotBeReadIsEmpty) {
    EXPECT_THAT(folder->fileNames(Folder::events), IsEmpty());
    EXPECT_THAT(folder->filePaths(Folder::upload), IsEmpty());
    EXPECT_THAT(folder->archivePaths(), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(AppFolderTest, OnlyZipsOfBackupAreArchives) {
    for (const auto* name : {"a.zip", "b.log", "c.zip.tmp", "zip"}) put(Folder::backup, name, "1");
    put(Folder::upload, "d.zip", "1");
    EXPECT_THAT(folder->archivePaths(), ElementsAre(path(Folder::backup, "a.zip")));
}

TEST_F(AppFolderTest, OnlyLogsOfAtLeastAByteAreNonEmptyLogs) {
    put(Folder::upload, "empty.log", "");
    put(Folder::upload, "one.log", "1");
    put(Folder::upload, "archive.zip", "1");
    put(Folder::upload, "log", "1");
    fs::create_directories(path(Folder::upload, "folder.log"));
    EXPECT_THAT(folder->nonEmptyLogPaths(Folder::upload), ElementsAre(path(Folder::upload, "one.log")));
}

TEST_F(AppFolderTest, ALinkOrAPipeIsNoLogFile) {
    put(Folder::upload, "a.log", "1");
    fs::create_symlink("a.log", path(Folder::upload, "link.log"));
    ASSERT_EQ(::mkfifo(path(Folder::upload, "pipe.log").c_str(), 0600), 0);
    EXPECT_THAT(folder->nonEmptyLogPaths(Folder::upload), ElementsAre(path(Folder::upload, "a.log")));
}

TEST_F(AppFolderTest, MovingReplacesAFileOfTheSameName) {
    folder->createFolders();
    put(Folder::events, "a.log", "new");
    put(Folder::upload, "a.log", "old");
    EXPECT_TRUE(folder->move("a.log", Folder::events, Folder::upload));
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "new");
    EXPECT_THAT(names(Folder::events), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(AppFolderTest, AFailedMoveSaysWhyAndLeavesTheSource) {
    put(Folder::events, "a.log", "1");
    writeFile(path(Folder::upload), "in the way");
    EXPECT_FALSE(folder->move("a.log", Folder::events, Folder::upload));
    EXPECT_EQ(bytes(Folder::events, "a.log"), "1");
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Failed to move a file: ")));
}

TEST_F(AppFolderTest, MovingWhatIsNotThereLeavesTheDestination) {
    folder->createFolders();
    put(Folder::upload, "a.log", "old");
    EXPECT_FALSE(folder->move("a.log", Folder::events, Folder::upload));
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "old");
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Failed to move a file: ")));
}

TEST_F(AppFolderTest, ADestinationThatCannotBeRemovedEndsTheMove) {
    class Stuck final : public RelayFileManager {
    public:
        using RelayFileManager::RelayFileManager;
        Result<void> removeItem(const std::string&) override { return Error{"stuck"}; }
    };
    folder->createFolders();
    put(Folder::events, "a.log", "new");
    put(Folder::upload, "a.log", "old");
    Stuck disk(fileManager);
    EXPECT_FALSE(AppFolder(disk, debugConsole(), folder->appInfo()).move("a.log", Folder::events, Folder::upload));
    EXPECT_EQ(bytes(Folder::events, "a.log"), "new");
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "old");
    EXPECT_THAT(console.lines(), ElementsAre("\"Failed to move a file: stuck\""));
}

TEST_F(AppFolderTest, MovingWithinAFolderChangesNothing) {
    put(Folder::events, "a.log", "1");
    (void)folder->move("a.log", Folder::events, Folder::events);
    EXPECT_EQ(bytes(Folder::events, "a.log"), "1");
}

TEST_F(AppFolderTest, RemovingAFileIsSilentAndAFailureSaysWhy) {
    put(Folder::upload, "a.log", "1");
    EXPECT_TRUE(folder->remove(path(Folder::upload, "a.log")));
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_FALSE(folder->remove(path(Folder::upload, "a.log")));
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Failed to delete a file: ")));
}

TEST_F(AppFolderTest, FailuresAreSilentWhileTheConsoleIsOff) {
    settings.showOutput = false;
    EXPECT_FALSE(folder->remove(path(Folder::upload, "a.log")));
    EXPECT_FALSE(folder->move("a.log", Folder::events, Folder::upload));
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(AppFolderTest, RemovingAllTakesTheApplicationsFolderAndNothingElse) {
    folder->createFolders();
    put(Folder::events, "a.log", "1");
    makeAppFolder("Other")->createFolders();
    folder->removeAll();
    EXPECT_FALSE(fs::exists(folder->path()));
    EXPECT_TRUE(fs::exists(support / "Tallyfoot/Other/Events"));
    folder->removeAll();
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(AppFolderTest, NoApplicationNameReachesBeyondItsOwnFolder) {
    folder->createFolders();
    put(Folder::events, "a.log", "1");
    writeFile(support / "neighbour", "1");
    for (const auto& name :
         {""s, "."s, ".."s, "../.."s, "Shop/Events"s, "/"s, "../Tallyfoot/Shop"s, "Shop\0"s, std::string(4000, 'x')}) {
        const auto odd = makeAppFolder(name);
        odd->createFolders();
        EXPECT_EQ(fs::path(odd->path()).parent_path(), support / "Tallyfoot");
        EXPECT_TRUE(fs::is_directory(odd->path(Folder::backup))) << name;
        odd->removeAll();
        EXPECT_FALSE(fs::exists(odd->path()));
    }
    EXPECT_EQ(bytes(Folder::events, "a.log"), "1");
    EXPECT_EQ(readFile(support / "neighbour"), "1");
}

TEST_F(AppFolderTest, SizeIsDividedByTheUnit) {
    putSparse(Folder::upload, "a.log", 3 * 1048576);
    const auto file = path(Folder::upload, "a.log");
    EXPECT_EQ(folder->size(file, Size::bytes(1)), 3145728.0F);
    EXPECT_EQ(folder->size(file, Size::bytes(2)), 1572864.0F);
    EXPECT_EQ(folder->size(file, Size::KB(1)), 3072.0F);
    EXPECT_EQ(folder->size(file, Size::KB(3)), 1024.0F);
    EXPECT_EQ(folder->size(file, Size::MB(1)), 3.0F);
    EXPECT_EQ(folder->size(file, Size::GB(1)), 3.0F / 1024.0F);
}

TEST_F(AppFolderTest, ATerabyteCountsAsAGigabyte) {
    putSparse(Folder::upload, "a.log", 5000);
    const auto file = path(Folder::upload, "a.log");
    EXPECT_GT(folder->size(file, Size::TB(1)), 0);
    EXPECT_EQ(folder->size(file, Size::TB(1)), folder->size(file, Size::GB(1)));
}

TEST_F(AppFolderTest, AnUnreadableItemHasNoSizeAndNoLine) {
    EXPECT_EQ(folder->size(path(Folder::upload, "a.log"), Size::bytes(1)), 0);
    EXPECT_EQ(folder->totalSize(Folder::upload, Size::bytes(1)), 0);
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(AppFolderTest, TotalSizeAddsUpEverythingBelow) {
    putSparse(Folder::upload, "a.log", 1000);
    putSparse(Folder::upload, ".hidden", 24);
    EXPECT_EQ(folder->totalSize(Folder::upload, Size::bytes(1)), 1024.0F);
    EXPECT_EQ(folder->totalSize(Folder::upload, Size::KB(1)), 1.0F);
    fs::create_directories(path(Folder::upload, "sub"));
    const auto subfolder = static_cast<float>(fileManager.attributesOfItem(path(Folder::upload, "sub")).value().size);
    EXPECT_EQ(folder->totalSize(Folder::upload, Size::bytes(1)), 1024.0F + subfolder);
    putSparse(Folder::upload, "sub/b.log", 7);
    EXPECT_GE(folder->totalSize(Folder::upload, Size::bytes(1)), 1024.0F + 7.0F);
}

TEST_F(AppFolderTest, AnUnreadableSubpathIsLeftOutOfTheTotal) {
    class Blind final : public RelayFileManager {
    public:
        using RelayFileManager::RelayFileManager;
        Result<FileAttributes> attributesOfItem(const std::string& path) const override {
            if (path.ends_with("b.log")) return Error{"unreadable"};
            return RelayFileManager::attributesOfItem(path);
        }
    };
    putSparse(Folder::upload, "a.log", 10);
    putSparse(Folder::upload, "b.log", 20);
    putSparse(Folder::upload, "c.log", 30);
    Blind disk(fileManager);
    const AppFolder blind(disk, debugConsole(), folder->appInfo());
    EXPECT_EQ(blind.totalSize(Folder::upload, Size::bytes(1)), 40.0F);
    EXPECT_THAT(blind.nonEmptyLogPaths(Folder::upload),
                UnorderedElementsAre(path(Folder::upload, "a.log"), path(Folder::upload, "c.log")));
}

TEST_F(AppFolderTest, OnlyLogsAndArchivesWithSomethingInThemAreWorthKeepingTheFolder) {
    EXPECT_FALSE(folder->mayHoldLogs()) << "no folder, no logs";
    folder->createFolders();
    put(Folder::events, "empty.log", "");
    put(Folder::upload, "notes.txt", "1");
    put(Folder::upload, ".hidden.log", "1");
    put(Folder::upload, "archive.zip", "1");
    put(Folder::backup, "closed.log", "1");
    fs::create_directory(path(Folder::events, "folder.log"));
    EXPECT_FALSE(folder->mayHoldLogs());
    for (const auto& [at, name] :
         {std::pair(Folder::events, "a.log"), std::pair(Folder::upload, "a.log"), std::pair(Folder::backup, "a.zip")}) {
        put(at, name, "1");
        EXPECT_TRUE(folder->mayHoldLogs()) << path(at, name);
        fs::remove(path(at, name));
    }
    EXPECT_FALSE(folder->mayHoldLogs());
}

TEST_F(AppFolderTest, WhatCannotBeReadMayHoldLogs) {
    class Blind final : public RelayFileManager {
    public:
        using RelayFileManager::RelayFileManager;
        Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const override {
            if (path == unreadable) return Error{"unreadable"};
            return RelayFileManager::contentsOfDirectory(path);
        }
        Result<FileAttributes> attributesOfItem(const std::string& path) const override {
            if (path == unreadable) return Error{"unreadable"};
            return RelayFileManager::attributesOfItem(path);
        }
        std::string unreadable;
    };
    folder->createFolders();
    put(Folder::events, "empty.log", "");
    Blind disk(fileManager);
    const AppFolder blind(disk, debugConsole(), folder->appInfo());
    EXPECT_FALSE(blind.mayHoldLogs());
    for (const auto& item : {folder->path(), path(Folder::events), path(Folder::upload), path(Folder::backup),
                             path(Folder::events, "empty.log")}) {
        disk.unreadable = item;
        EXPECT_TRUE(blind.mayHoldLogs()) << item;
    }
}

using AppFolderDeathTest = AppFolderTest;

TEST_F(AppFolderDeathTest, AnOperationWithoutAnApplicationIsFatal) {
    AppFolder nobody(fileManager, debugConsole(), nullptr);
    EXPECT_DEATH((void)nobody.path(), "application");
    EXPECT_DEATH((void)nobody.appName(), "application");
    EXPECT_DEATH(nobody.createFolders(), "application");
    EXPECT_DEATH(nobody.removeAll(), "application");
    EXPECT_DEATH((void)nobody.fileNames(Folder::events), "application");
    EXPECT_DEATH((void)nobody.move("a", Folder::events, Folder::upload), "application");
    EXPECT_DEATH((void)nobody.totalSize(Folder::upload, Size::bytes(1)), "application");
}

TEST_F(AppFolderDeathTest, AMissingApplicationSupportDirectoryIsFatal) {
    NoSupportDirectory disk(fileManager);
    AppFolder homeless(disk, debugConsole(), folder->appInfo());
    EXPECT_DEATH((void)homeless.path(), "application support");
}

} // namespace
} // namespace tallyfoot::testing
