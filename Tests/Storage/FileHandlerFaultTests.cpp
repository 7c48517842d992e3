#include "RelayFileManager.h"
#include "StorageFixture.h"
#include "Support/ResourceLimit.h"

#include <filesystem>

namespace tallyfoot::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace fs = std::filesystem;

using FileHandlerFaultTest = StorageFixture;

TEST_F(FileHandlerFaultTest, AFileThatCannotBeCreatedIsReportedInItsOwnWords) {
    writeFile(path(Folder::events), "in the way");
    const auto handler = makeFileHandler();
    const auto url = "file://" + path(Folder::events, firstName);
    EXPECT_THAT(console.lines(),
                ElementsAre("\"Current log filename: 07-03-2024T14-05-09-123.log\"",
                            "\"Current log filepath: " + url + "\"", "\"Filed to create log file at: " + url + "\""));
}

TEST_F(FileHandlerFaultTest, ARecordWithoutAFileIsReportedOnce) {
    writeFile(path(Folder::events), "in the way");
    const auto handler = makeFileHandler();
    console.clear();
    handler->write("onejsonsplit");
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Filed to create log file at: ")));
}

TEST_F(FileHandlerFaultTest, WithoutAHandleAWriteDoesNothingButTheThresholdIsChecked) {
    writeFile(path(Folder::events), "in the way");
    const auto handler = makeFileHandler();
    int triggers = 0;
    handler->setTriggerUpload([&] { ++triggers; });
    handler->write("onejsonsplit");
    EXPECT_EQ(triggers, 0);
    settings.ignoreFileSizeThreshold = true;
    handler->write("onejsonsplit");
    EXPECT_EQ(triggers, 1);
}

TEST_F(FileHandlerFaultTest, TheThresholdLooksAtTheFileItselfWhenItCannotBeOpened) {
    class Closed final : public RelayFileManager {
    public:
        using RelayFileManager::RelayFileManager;
        Result<std::unique_ptr<FileHandle>> fileHandleForWriting(const std::string&) override {
            return Error{"closed"};
        }
    };
    Closed disk(fileManager);
    const auto handler = makeFileHandler(disk);
    int triggers = 0;
    handler->setTriggerUpload([&] { ++triggers; });
    console.clear();
    handler->write("onejsonsplit");
    EXPECT_THAT(console.lines(), ElementsAre("\"Failed to write to log file: closed\""));
    EXPECT_EQ(triggers, 0);
    fs::resize_file(path(Folder::events, firstName), 10485760);
    handler->write("onejsonsplit");
    EXPECT_EQ(triggers, 1);
}

TEST_F(FileHandlerFaultTest, AFileThatCannotBeOpenedIsNeitherWrittenToNorPutAmongTheClosedOnes) {
    class Refusing final : public RelayFileManager {
    public:
        using RelayFileManager::RelayFileManager;
        Result<std::unique_ptr<FileHandle>> fileHandleForWriting(const std::string& path) override {
            if (path.ends_with("/root.log") && isRefusing) return Error{"not yours"};
            return RelayFileManager::fileHandleForWriting(path);
        }
        bool isRefusing = true;
    };
    put(Folder::events, "root.log", "onejsonsplit"); // as after one run by another user
    Refusing disk(fileManager);
    const auto handler = makeFileHandler(disk);
    EXPECT_EQ(handler->currentLogFileName(), firstName);
    handler->write("twojsonsplit");
    console.clear();
    handler->close();
    EXPECT_THAT(names(Folder::events), ElementsAre("root.log"));
    EXPECT_THAT(names(Folder::upload), ElementsAre(firstName));
    EXPECT_EQ(bytes(Folder::upload, firstName), "twojsonsplit");
    EXPECT_THAT(console.lines(), ElementsAre("\"Failed to move a file: not yours\""));
    disk.isRefusing = false;
    handler->close();
    EXPECT_EQ(bytes(Folder::upload, "root.log"), "onejsonsplit");
}

TEST_F(FileHandlerFaultTest, WritingGoesOnOnceTheObstacleIsGone) {
    writeFile(path(Folder::events), "in the way");
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    fs::remove(path(Folder::events));
    handler->write("twojsonsplit");
    EXPECT_EQ(bytes(Folder::events, firstName), "twojsonsplit");
}

TEST_F(FileHandlerFaultTest, ARecordThatDoesNotFitIsReportedAndLeavesNoFragment) {
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    console.clear();
    {
        const ResourceLimit full(RLIMIT_FSIZE, 20);
        handler->write("twojsonsplit");
    }
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Failed to write to log file: ")));
    EXPECT_EQ(bytes(Folder::events, firstName), "onejsonsplit");
    handler->write("threejsonsplit");
    EXPECT_EQ(bytes(Folder::events, firstName), "onejsonsplitthreejsonsplit");
}

TEST_F(FileHandlerFaultTest, AFileThatCannotMoveStaysAndGoesWithTheNextOne) {
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    fs::remove_all(path(Folder::upload));
    writeFile(path(Folder::upload), "in the way");
    console.clear();
    handler->close();
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Failed to move a file: ")));
    EXPECT_EQ(bytes(Folder::events, firstName), "onejsonsplit");
    handler->write("twojsonsplit");
    const auto second = *handler->currentLogFileName();
    fs::remove(path(Folder::upload));
    fs::create_directories(path(Folder::upload));
    handler->close();
    EXPECT_EQ(bytes(Folder::upload, firstName), "onejsonsplit");
    EXPECT_EQ(bytes(Folder::upload, second), "twojsonsplit");
}

TEST_F(FileHandlerFaultTest, ClosingMakesTheFoldersThatAreGone) {
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    fs::remove_all(path(Folder::upload));
    fs::remove_all(path(Folder::backup));
    console.clear();
    handler->close();
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_EQ(bytes(Folder::upload, firstName), "onejsonsplit");
    handler->zip(directly);
    EXPECT_EQ(names(Folder::backup).size(), 1U);
}

TEST_F(FileHandlerFaultTest, ALeftoverThatCannotMoveReplacesNothing) {
    class Stuck final : public RelayFileManager {
    public:
        using RelayFileManager::RelayFileManager;
        Result<void> moveItem(const std::string& source, const std::string& destination) override {
            if (source.ends_with("/Events/old.log")) return Error{"stuck"};
            return RelayFileManager::moveItem(source, destination);
        }
    };
    Stuck disk(fileManager);
    const auto handler = makeFileHandler(disk);
    put(Folder::events, "old.log", "onejsonsplit");
    put(Folder::upload, "old.log", "twojsonsplit");
    console.clear();
    handler->close();
    EXPECT_THAT(console.lines(), ElementsAre("\"Failed to move a file: stuck\""));
    EXPECT_EQ(bytes(Folder::events, "old.log"), "onejsonsplit");
    EXPECT_EQ(bytes(Folder::upload, "old.log"), "twojsonsplit");
}

TEST_F(FileHandlerFaultTest, PackingOntoAFullDiskLeavesTheLogsAndNothingElse) {
    const auto handler = makeFileHandler();
    put(Folder::upload, "a.log", std::string(5000, 'x'));
    console.clear();
    {
        const ResourceLimit full(RLIMIT_FSIZE, 1000);
        handler->zip(directly);
    }
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Error while zipping files: ")));
    EXPECT_EQ(bytes(Folder::upload, "a.log"), std::string(5000, 'x'));
    EXPECT_THAT(names(Folder::backup), IsEmpty());
    handler->zip(directly);
    EXPECT_EQ(names(Folder::backup).size(), 1U);
    EXPECT_THAT(names(Folder::upload), IsEmpty());
}

TEST_F(FileHandlerFaultTest, PackingWithoutABackupFolderIsAnError) {
    const auto handler = makeFileHandler();
    put(Folder::upload, "a.log", "1");
    fs::remove_all(path(Folder::backup));
    writeFile(path(Folder::backup), "in the way");
    console.clear();
    handler->zip(directly);
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Error while zipping files: ")));
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "1");
}

TEST_F(FileHandlerFaultTest, RestoringOntoAFullDiskLeavesTheArchiveAndNothingElse) {
    const auto handler = makeFileHandler();
    const auto archive = putArchive("a.zip", {{"a.log", "1"}, {"b.log", std::string(5000, 'x')}});
    console.clear();
    {
        const ResourceLimit full(RLIMIT_FSIZE, 1000);
        handler->restore(archive, {}, directly);
    }
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Failed to restore files: ")));
    EXPECT_THAT(names(Folder::backup), ElementsAre("a.zip"));
    EXPECT_THAT(names(Folder::upload), IsEmpty());
    handler->restore(archive, {}, directly);
    EXPECT_EQ(bytes(Folder::upload, "b.log"), std::string(5000, 'x'));
}

TEST_F(FileHandlerFaultTest, ARestoredFileThatCannotMoveTakesTheOthersBack) {
    class Stuck final : public RelayFileManager {
    public:
        using RelayFileManager::RelayFileManager;
        Result<void> moveItem(const std::string& source, const std::string& destination) override {
            if (destination.ends_with("/Upload/b.log")) return Error{"stuck"};
            return RelayFileManager::moveItem(source, destination);
        }
    };
    Stuck disk(fileManager);
    const auto handler = makeFileHandler(disk);
    const auto archive = putArchive("a.zip", {{"a.log", "1"}, {"b.log", "2"}});
    console.clear();
    handler->restore(archive, {"a.log"}, directly);
    EXPECT_THAT(console.lines(), ElementsAre("\"Failed to restore files: stuck\""));
    EXPECT_THAT(names(Folder::upload), IsEmpty());
    EXPECT_THAT(names(Folder::backup), ElementsAre("a.zip"));
}

TEST_F(FileHandlerFaultTest, APackedFileThatCannotBeTakenAwayIsReported) {
    class Stuck final : public RelayFileManager {
    public:
        using RelayFileManager::RelayFileManager;
        Result<void> moveItem(const std::string& source, const std::string& destination) override {
            if (source.ends_with("/Upload/a.log")) return Error{"stuck"};
            return RelayFileManager::moveItem(source, destination);
        }
        Result<void> removeItem(const std::string& path) override {
            if (path.ends_with("/Upload/a.log")) return Error{"stuck"};
            return RelayFileManager::removeItem(path);
        }
    };
    Stuck disk(fileManager);
    const auto handler = makeFileHandler(disk);
    put(Folder::upload, "a.log", "1");
    console.clear();
    handler->zip(directly);
    EXPECT_THAT(console.lines(), Contains("\"Failed to delete a file: stuck\""));
    EXPECT_EQ(names(Folder::backup).size(), 1U);
}

} // namespace
} // namespace tallyfoot::testing
