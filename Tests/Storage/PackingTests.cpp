#include "RelayFileManager.h"
#include "StorageFixture.h"
#include "Support/OrdinaryUser.h"

#include "Tallyfoot/Storage/Archive.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>

namespace tallyfoot::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

namespace fs = std::filesystem;

class PackingTest : public StorageFixture {
protected:
    void SetUp() override {
        handler = makeFileHandler();
        console.clear();
    }

    // The entries of the one archive in Backup, in its order.
    std::vector<std::string> packedNames() {
        const auto archives = names(Folder::backup);
        EXPECT_EQ(archives.size(), 1U);
        if (archives.empty()) return {};
        const auto target = support / "unpacked";
        fs::create_directories(target);
        const auto unpacked = Archive::unpack(fileManager, path(Folder::backup, archives.front()), target + "/");
        EXPECT_TRUE(unpacked);
        return unpacked ? unpacked.value() : std::vector<std::string>();
    }

    std::unique_ptr<FileHandler> handler;
};

TEST_F(PackingTest, NonEmptyLogsGoIntoOneArchiveNamedByTheDate) {
    put(Folder::upload, "a.log", "onejsonsplit");
    put(Folder::upload, "b.log", "twojsonsplit");
    put(Folder::upload, "empty.log", "");
    put(Folder::upload, "notes.txt", "1");
    clock.advance(std::chrono::hours(1));
    handler->zip(directly);
    EXPECT_THAT(names(Folder::backup), ElementsAre("07-03-2024T15-05-09-123.zip"));
    EXPECT_THAT(packedNames(), UnorderedElementsAre("a.log", "b.log"));
    EXPECT_EQ(readFile(support / "unpacked/a.log"), "onejsonsplit");
    EXPECT_EQ(readFile(support / "unpacked/b.log"), "twojsonsplit");
    EXPECT_THAT(names(Folder::upload), ElementsAre("notes.txt"));
}

TEST_F(PackingTest, NothingToPackMakesNoArchive) {
    handler->zip(directly);
    EXPECT_THAT(names(Folder::backup), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(PackingTest, WhatIsNoFileIsLeftAloneAndBlocksNobody) {
    // Folders have no size on some disks.
    class Sizeless final : public RelayFileManager {
    public:
        using RelayFileManager::RelayFileManager;
        Result<FileAttributes> attributesOfItem(const std::string& path) const override {
            auto attributes = RelayFileManager::attributesOfItem(path);
            if (attributes && fs::is_directory(path)) attributes.value().size = 0;
            return attributes;
        }
    };
    Sizeless disk(fileManager);
    const auto sizeless = makeFileHandler(disk);
    put(Folder::upload, "a.log", "1");
    put(Folder::upload, "folder.log/inner", "1");
    fs::create_symlink("nowhere", path(Folder::upload, "link.log"));
    sizeless->zip(directly);
    EXPECT_THAT(packedNames(), ElementsAre("a.log"));
    EXPECT_THAT(names(Folder::upload), ElementsAre("folder.log", "link.log"));
    EXPECT_EQ(readFile(path(Folder::upload, "folder.log/inner")), "1");
}

TEST_F(PackingTest, TheCurrentFileIsNotPacked) {
    handler->write("onejsonsplit");
    handler->zip(directly);
    EXPECT_THAT(names(Folder::backup), IsEmpty());
    EXPECT_EQ(bytes(Folder::events, *handler->currentLogFileName()), "onejsonsplit");
}

TEST_F(PackingTest, PackedFilesAreEchoedInAFrame) {
    put(Folder::upload, "a.log", "{\n  \"evtId\" : \"1\"\n}jsonsplit");
    handler->zip(directly);
    EXPECT_EQ(console.text(), "*******\na.log\n\n{\n  \"evtId\" : \"1\"\n}jsonsplit\n*******\n");
}

TEST_F(PackingTest, PackedFilesAreEchoedInListOrder) {
    put(Folder::upload, "a.log", "1");
    put(Folder::upload, "b.log", "2");
    const auto order = handler->appFolder().fileNames(Folder::upload);
    handler->zip(directly);
    EXPECT_EQ(packedNames(), order);
    EXPECT_LT(console.text().find(order[0]), console.text().find(order[1]));
}

TEST_F(PackingTest, NothingIsEchoedWhileTheConsoleIsOff) {
    settings.showOutput = false;
    put(Folder::upload, "a.log", "1");
    handler->zip(directly);
    EXPECT_EQ(names(Folder::backup).size(), 1U);
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(PackingTest, NothingIsEchoedWhenPackingFails) {
    put(Folder::upload, "a.log", "the text");
    fs::remove_all(path(Folder::backup));
    writeFile(path(Folder::backup), "in the way");
    handler->zip(directly);
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Error while zipping files: ")));
}

TEST_F(PackingTest, TwoArchivesOfOneMillisecondHaveNamesOfTheirOwn) {
    put(Folder::upload, "a.log", "1");
    handler->zip(directly);
    put(Folder::upload, "b.log", "2");
    handler->zip(directly);
    EXPECT_THAT(names(Folder::backup), ElementsAre("07-03-2024T14-05-09-124.zip", "07-03-2024T14-05-09-125.zip"));
}

TEST_F(PackingTest, TheTurnIsTakenOnlyOnceAllIsPacked) {
    put(Folder::upload, "a.log", std::string(1'000'000, 'x'));
    int turns = 0;
    handler->zip([&](FunctionRef<void()> block) {
        if (++turns == 1) { // packed already, under a name that nobody lists
            EXPECT_THAT(handler->appFolder().fileNames(Folder::backup), IsEmpty());
            EXPECT_FALSE(names(Folder::backup).empty());
            EXPECT_THAT(names(Folder::upload), ElementsAre("a.log"));
        }
        block();
    });
    EXPECT_EQ(turns, 1);
    EXPECT_EQ(names(Folder::backup).size(), 1U);
}

TEST_F(PackingTest, ManyFilesLeaveUploadAFewPerTurn) {
    constexpr std::size_t count = 100;
    for (std::size_t index = 0; index < count; ++index) put(Folder::upload, std::to_string(index) + ".log", "1");
    std::size_t before = count;
    handler->zip([&](FunctionRef<void()> block) {
        block();
        const auto now = names(Folder::upload).size();
        EXPECT_LE(before - now, static_cast<std::size_t>(filesPerTurn));
        before = now;
        // What has left is in the archive, and nobody sends that yet.
        const auto archives = handler->appFolder().archivePaths();
        ASSERT_EQ(archives.size(), 1U);
        EXPECT_TRUE(FileHandler::isRestoring(archives.front()));
    });
    EXPECT_FALSE(FileHandler::isRestoring(handler->appFolder().archivePaths().front()));
    EXPECT_EQ(before, 0U);
    EXPECT_EQ(packedNames().size(), count);
}

TEST_F(PackingTest, RecordsAreWrittenAndFilesClosedWhileItPacks) {
    put(Folder::upload, "a.log", "1");
    int turns = 0;
    handler->zip([&](FunctionRef<void()> block) {
        if (++turns == 1) {
            handler->write("onejsonsplit");
            handler->close();
        }
        block();
    });
    EXPECT_THAT(packedNames(), ElementsAre("a.log"));
    EXPECT_EQ(names(Folder::upload).size(), 1U);
    EXPECT_EQ(bytes(Folder::upload, names(Folder::upload).front()), "onejsonsplit");
}

TEST_F(PackingTest, AFileTrimmedMeanwhileIsNotInTheArchive) {
    put(Folder::upload, "a.log", "1");
    put(Folder::upload, "b.log", "2");
    int turns = 0;
    handler->zip([&](FunctionRef<void()> block) {
        if (++turns == 1) fs::remove(path(Folder::upload, "a.log"));
        block();
    });
    EXPECT_THAT(packedNames(), ElementsAre("b.log"));
    EXPECT_THAT(names(Folder::upload), IsEmpty());
    EXPECT_THAT(console.text(), ::testing::Not(HasSubstr("Error")));
}

TEST_F(PackingTest, AFileTrimmedOnceTheArchiveIsInPlaceStaysInIt) {
    for (int index = 0; index < 100; ++index) put(Folder::upload, std::to_string(index) + ".log", "1");
    int turns = 0;
    handler->zip([&](FunctionRef<void()> block) {
        if (++turns == 2) fs::remove(path(Folder::upload, names(Folder::upload).front()));
        block();
    });
    EXPECT_EQ(packedNames().size(), 100U);
    EXPECT_THAT(names(Folder::upload), IsEmpty());
    EXPECT_EQ(console.text().find("Failed"), std::string::npos);
}

TEST_F(PackingTest, AHandlerMadeWhileTheLogsLeaveDoesNotRestoreTheArchive) {
    for (int index = 0; index < 100; ++index) put(Folder::upload, std::to_string(index) + ".log", "1");
    int turns = 0;
    handler->zip([&](FunctionRef<void()> block) {
        if (++turns == 2) makeFileHandler();
        block();
    });
    EXPECT_EQ(packedNames().size(), 100U);
    EXPECT_THAT(names(Folder::upload), IsEmpty());
}

TEST_F(PackingTest, BetweenTwoTurnsEveryRecordIsInALogOrInAnArchive) {
    for (int index = 0; index < 100; ++index) put(Folder::upload, std::to_string(index) + ".log", "1");
    int turns = 0;
    handler->zip([&](FunctionRef<void()> block) {
        ++turns;
        block();
        const bool isPacked = !handler->appFolder().archivePaths().empty();
        EXPECT_TRUE(isPacked || names(Folder::upload).size() == 100U) << "after turn " << turns;
    });
    EXPECT_GT(turns, 1);
    EXPECT_EQ(packedNames().size(), 100U);
}

TEST_F(PackingTest, AFileThatFollowedATrimmedOneIsNotTakenForIt) {
    for (int index = 0; index < 100; ++index) put(Folder::upload, std::to_string(index) + ".log", "1");
    int turns = 0;
    std::string left;
    handler->zip([&](FunctionRef<void()> block) {
        if (++turns == 2) {
            left = names(Folder::upload).front();
            put(Folder::upload, left, "another one");
        }
        block();
    });
    EXPECT_EQ(bytes(Folder::upload, left), "another one");
    EXPECT_THAT(names(Folder::upload), ElementsAre(left));
}

TEST_F(PackingTest, AFileGoneBeforeItIsReadIsNoError) {
    class Vanishing final : public RelayFileManager {
    public:
        Vanishing(FileManager& next, std::string path) : RelayFileManager(next), path_(std::move(path)) {}

        Result<FileAttributes> attributesOfItem(const std::string& path) const override { // seen, then gone
            auto attributes = RelayFileManager::attributesOfItem(path);
            if (path == path_) fs::remove(path_);
            return attributes;
        }

    private:
        std::string path_;
    };
    Vanishing disk(fileManager, path(Folder::upload, "a.log"));
    const auto vanishing = makeFileHandler(disk);
    put(Folder::upload, "a.log", "1");
    put(Folder::upload, "b.log", "2");
    vanishing->zip(directly);
    EXPECT_THAT(packedNames(), ElementsAre("b.log"));
    EXPECT_THAT(console.text(), ::testing::Not(HasSubstr("Error")));
}

TEST_F(PackingTest, AFileReplacedMeanwhileIsPackedAnew) {
    put(Folder::upload, "a.log", "old");
    int turns = 0;
    handler->zip([&](FunctionRef<void()> block) {
        if (++turns == 1) put(Folder::upload, "a.log", "the new one");
        block();
    });
    EXPECT_THAT(packedNames(), ElementsAre("a.log"));
    EXPECT_EQ(readFile(support / "unpacked/a.log"), "the new one");
}

TEST_F(PackingTest, LogsDeletedMeanwhileAreNotSent) {
    for (int deletedAt : {1, 2}) { // before the archive is in place, and after
        for (int index = 0; index < 100; ++index) put(Folder::upload, std::to_string(index) + ".log", "1");
        int turns = 0;
        handler->zip([&](FunctionRef<void()> block) {
            if (++turns == deletedAt) handler->deleteAllLogs();
            block();
        });
        EXPECT_THAT(handler->appFolder().archivePaths(), IsEmpty());
        EXPECT_THAT(names(Folder::upload), IsEmpty());
        EXPECT_EQ(console.text().find("Failed"), std::string::npos);
    }
}

TEST_F(PackingTest, FilesThatKeepChangingAreGivenUpForThisTime) {
    int count = 1;
    put(Folder::upload, "a.log", "1");
    handler->zip([&](FunctionRef<void()> block) {
        put(Folder::upload, "a.log", std::string(static_cast<std::size_t>(++count), 'x'));
        block();
    });
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Error while zipping files: ")));
    EXPECT_THAT(names(Folder::upload), ElementsAre("a.log"));
    EXPECT_THAT(names(Folder::backup), IsEmpty());
}

TEST_F(PackingTest, AnotherHandlerOfTheFolderLeavesThePackingAlone) {
    put(Folder::upload, "a.log", "1");
    handler->zip([&](FunctionRef<void()> block) {
        makeFileHandler(false);
        block();
    });
    EXPECT_THAT(packedNames(), ElementsAre("a.log"));
}

TEST_F(PackingTest, WhatAKilledRunLeftUnfinishedGoesAtTheNextStart) {
    put(Folder::upload, "a.log", "1");
    put(Folder::backup, ".work-1.archive.zip.XYZ", "half an archive");
    put(Folder::backup, ".work-99.entry.b.log", "half a restore");
    put(Folder::backup, ".work-99.waste.b.zip", "a restored archive");
    put(Folder::backup, ".work-98.waste.c.log", "packed, and the archive is in place");
    put(Folder::backup, ".file-77.tmp", "");
    makeFileHandler();
    EXPECT_THAT(names(Folder::backup), IsEmpty());
    EXPECT_THAT(names(Folder::upload), ElementsAre("a.log"));
}

TEST_F(PackingTest, AStrangersFileWithANameLikeOursTakesNoArchiveAway) {
    putArchive("a.zip", {{"a.log", "1"}});
    put(Folder::backup, ".work-stranger", "");
    makeFileHandler();
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "1");
}

TEST_F(PackingTest, ALogThatCannotBeReadStaysAndDoesNotHoldUpTheOthers) {
    put(Folder::upload, "a.log", "1");
    put(Folder::upload, "b.log", "2");
    put(Folder::upload, "c.log", "3");
    const auto unreadable = path(Folder::upload, "b.log");
    fs::permissions(unreadable, fs::perms::none);
    EXPECT_TRUE(asOrdinaryUser(support, [&] {
        handler->zip(directly);
        return console.text().find("Error while zipping files: ") != std::string::npos;
    }));
    fs::permissions(unreadable, fs::perms::owner_all);
    EXPECT_THAT(packedNames(), UnorderedElementsAre("a.log", "c.log"));
    EXPECT_THAT(names(Folder::upload), ElementsAre("b.log"));
    EXPECT_EQ(bytes(Folder::upload, "b.log"), "2");
}

TEST_F(PackingTest, ALogThatCannotBeReadIsReportedOnceWhereItIsTheOnlyOne) {
    put(Folder::upload, "a.log", "1");
    fs::permissions(path(Folder::upload, "a.log"), fs::perms::none);
    EXPECT_TRUE(asOrdinaryUser(support, [&] {
        handler->zip(directly);
        return console.lines().size() == 1;
    }));
    fs::permissions(path(Folder::upload, "a.log"), fs::perms::owner_all);
    EXPECT_THAT(names(Folder::backup), IsEmpty());
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "1");
}

TEST_F(PackingTest, FilesStayWhenTheArchiveCannotBePutInPlace) {
    class Stuck final : public RelayFileManager {
    public:
        using RelayFileManager::RelayFileManager;
        Result<void> moveItem(const std::string& source, const std::string& destination) override {
            if (source.ends_with(".archive.zip")) return Error{"stuck"};
            return RelayFileManager::moveItem(source, destination);
        }
    };
    Stuck disk(fileManager);
    put(Folder::upload, "a.log", "1");
    const auto stuck = makeFileHandler(disk);
    console.clear();
    stuck->zip(directly);
    EXPECT_THAT(console.lines(), ElementsAre("\"Error while zipping files: stuck\""));
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "1");
    EXPECT_THAT(names(Folder::backup), IsEmpty());
}

class PackingAtExitTest : public StorageFixture {};

// The C library empties the buffers of its streams then, and some bytes may come twice.
TEST_F(PackingAtExitTest, WhatIsPackedWhileTheProcessExitsIsNotTrusted) {
    static std::function<void()> atExit;
    put(Folder::upload, "a.log", "1");
    const auto child = ::fork();
    if (child == 0) {
        std::atexit([] { atExit(); }); // comes after the library's own
        const auto ending = makeFileHandler();
        atExit = [&] {
            ending->zip(directly);
            ::_exit(0);
        };
        std::exit(1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_THAT(names(Folder::backup), IsEmpty());
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "1");
}

} // namespace
} // namespace tallyfoot::testing
