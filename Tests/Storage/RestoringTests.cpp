#include "RelayFileManager.h"
#include "StorageFixture.h"

#include <filesystem>

namespace tallyfoot::testing {
namespace {

using namespace std::string_literals;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace fs = std::filesystem;

class RestoringTest : public StorageFixture {
protected:
    void SetUp() override {
        handler = makeFileHandler();
        console.clear();
    }
    void restore(const std::string& archive, const std::vector<std::string>& delivered = {}) {
        handler->restore(archive, delivered, directly);
    }

    std::unique_ptr<FileHandler> handler;
};

TEST_F(RestoringTest, EveryFileReturnsAndTheArchiveIsGone) {
    const auto archive = putArchive("a.zip", {{"a.log", "onejsonsplit"}, {"b.log", "twojsonsplit"}});
    restore(archive);
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "onejsonsplit");
    EXPECT_EQ(bytes(Folder::upload, "b.log"), "twojsonsplit");
    EXPECT_THAT(names(Folder::backup), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(RestoringTest, WhatWasPackedIsRestoredByteForByte) {
    const std::string text = std::string(100'000, 'x') + "jsonsplit";
    put(Folder::upload, "a.log", text);
    put(Folder::upload, "b.log", "twojsonsplit");
    handler->zip(directly);
    ASSERT_THAT(names(Folder::upload), IsEmpty());
    restore(handler->appFolder().archivePaths().at(0));
    EXPECT_EQ(bytes(Folder::upload, "a.log"), text);
    EXPECT_EQ(bytes(Folder::upload, "b.log"), "twojsonsplit");
}

TEST_F(RestoringTest, DeliveredFilesDoNotReturn) {
    const auto archive = putArchive("a.zip", {{"a.log", "1"}, {"b.log", "2"}, {"c.log", "3"}});
    restore(archive, {"c.log", "a.log"});
    EXPECT_THAT(names(Folder::upload), ElementsAre("b.log"));
    EXPECT_THAT(names(Folder::backup), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(RestoringTest, ADeliveredNameThatIsMissingIsOnlyAFailedDelete) {
    const auto archive = putArchive("a.zip", {{"a.log", "1"}, {"b.log", "2"}});
    restore(archive, {"none.log", "b.log", "b.log"});
    EXPECT_THAT(names(Folder::upload), ElementsAre("a.log"));
    EXPECT_THAT(console.lines(),
                ElementsAre(StartsWith("\"Failed to delete a file: "), StartsWith("\"Failed to delete a file: ")));
}

TEST_F(RestoringTest, ADeliveredNameNeverReachesBeyondUpload) {
    writeFile(support / "x", "1");
    put(Folder::events, "y.log", "1");
    put(Folder::upload, ".hidden", "1");
    const auto archive = putArchive("a.zip", {{"a.log", "1"}});
    const std::vector<std::string> delivered{"../../../x", "../Events/y.log", support / "x", "..",   ".",
                                             "",           ".hidden",         "a.log\0"s,    "..\\x"};
    restore(archive, delivered);
    EXPECT_EQ(readFile(support / "x"), "1");
    EXPECT_EQ(bytes(Folder::events, "y.log"), "1");
    EXPECT_THAT(names(Folder::upload), ElementsAre(".hidden", "a.log"));
    EXPECT_EQ(console.lines().size(), delivered.size());
    EXPECT_THAT(console.lines(), ::testing::Each(StartsWith("\"Failed to delete a file: ")));
}

TEST_F(RestoringTest, AFileThatIsThereAlreadyCountsAsRestored) {
    put(Folder::upload, "a.log", "the same");
    const auto archive = putArchive("a.zip", {{"a.log", "the same"}, {"b.log", "2"}});
    restore(archive);
    EXPECT_THAT(names(Folder::upload), ElementsAre("a.log", "b.log"));
    EXPECT_THAT(names(Folder::backup), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(RestoringTest, AFileThatIsThereAlreadyGoesIfItWasDelivered) {
    put(Folder::upload, "a.log", "the same");
    const auto archive = putArchive("a.zip", {{"a.log", "the same"}, {"b.log", "2"}});
    restore(archive, {"a.log"});
    EXPECT_THAT(names(Folder::upload), ElementsAre("b.log"));
}

TEST_F(RestoringTest, AFileWithOtherBytesStaysAndTheRestoredOneGetsAName) {
    put(Folder::upload, "a.log", "the one");
    const auto archive = putArchive("a.zip", {{"a.log", "another"}});
    restore(archive);
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "the one");
    EXPECT_EQ(bytes(Folder::upload, "07-03-2024T14-05-09-124.log"), "another");
    EXPECT_THAT(names(Folder::backup), IsEmpty());
}

TEST_F(RestoringTest, ADeliveredNameMeansTheRestoredFileAndNotItsNamesake) {
    put(Folder::upload, "a.log", "the one");
    const auto archive = putArchive("a.zip", {{"a.log", "another one"}, {"b.log", "2"}});
    restore(archive, {"a.log"});
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "the one");
    EXPECT_THAT(names(Folder::upload), ElementsAre("a.log", "b.log"));
}

TEST_F(RestoringTest, AFolderInTheWayIsNotTouched) {
    fs::create_directories(path(Folder::upload, "a.log"));
    const auto archive = putArchive("a.zip", {{"a.log", "1"}});
    restore(archive);
    EXPECT_TRUE(fs::is_directory(path(Folder::upload, "a.log")));
    EXPECT_EQ(bytes(Folder::upload, "07-03-2024T14-05-09-124.log"), "1");
}

TEST_F(RestoringTest, ADamagedArchiveStaysAndNothingElseIsDone) {
    put(Folder::upload, "b.log", "2");
    const auto archive = putArchive("a.zip", {{"a.log", "onejsonsplit"}, {"b.log", "twojsonsplit"}});
    replaceInFile(archive, "twojson", "2wojson");
    restore(archive, {"b.log"});
    EXPECT_THAT(names(Folder::upload), ElementsAre("b.log"));
    EXPECT_THAT(names(Folder::backup), ElementsAre("a.zip"));
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Failed to restore files: ")));
}

TEST_F(RestoringTest, AnArchiveThatIsMissingIsAFailure) {
    restore(path(Folder::backup, "none.zip"), {"a.log"});
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Failed to restore files: ")));
}

TEST_F(RestoringTest, AnEntryThatLeadsElsewhereFailsTheWholeRestore) {
    const auto archive = putArchive("a.zip", {{"a.log", "1"}, {"../../../x", "2"}});
    restore(archive);
    EXPECT_THAT(names(Folder::upload), IsEmpty());
    EXPECT_FALSE(fs::exists(support / "x"));
    EXPECT_THAT(names(Folder::backup), ElementsAre("a.zip"));
}

TEST_F(RestoringTest, NothingIsSeenInUploadBeforeItIsWhole) {
    const auto archive = putArchive("a.zip", {{"a.log", "1"}, {"b.log", "2"}});
    int turns = 0;
    handler->restore(archive, {}, [&](FunctionRef<void()> block) {
        ++turns;
        EXPECT_THAT(names(Folder::upload), IsEmpty());
        EXPECT_TRUE(FileHandler::isRestoring(archive));
        block();
        EXPECT_THAT(names(Folder::upload), ElementsAre("a.log", "b.log"));
    });
    EXPECT_EQ(turns, 1);
    EXPECT_FALSE(FileHandler::isRestoring(archive));
}

TEST_F(RestoringTest, LogsDeletedMeanwhileDoNotReturn) {
    const auto archive = putArchive("a.zip", {{"a.log", "1"}});
    handler->restore(archive, {}, [&](FunctionRef<void()> block) {
        handler->deleteAllLogs();
        block();
    });
    EXPECT_THAT(names(Folder::upload), IsEmpty());
    EXPECT_THAT(names(Folder::backup), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(RestoringTest, ADeliveredNameGivenTwiceLeavesTheNamesake) {
    put(Folder::upload, "a.log", "the one");
    const auto archive = putArchive("a.zip", {{"a.log", "another one"}});
    restore(archive, {"a.log", "a.log"});
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "the one");
    EXPECT_THAT(names(Folder::upload), ElementsAre("a.log"));
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Failed to delete a file: ")));
}

TEST_F(RestoringTest, ADeliveredNameOfAnotherFileDeletesThatFile) {
    put(Folder::upload, "other.log", "1");
    restore(putArchive("a.zip", {{"a.log", "1"}}), {"other.log"});
    EXPECT_THAT(names(Folder::upload), ElementsAre("a.log"));
}

class RestoringManyTest : public RestoringTest {
protected:
    std::string putMany() {
        std::vector<std::pair<std::string, std::string>> entries;
        for (int index = 0; index < 100; ++index) entries.emplace_back(std::to_string(index) + ".log", "1");
        return putArchive("many.zip", entries);
    }
};

TEST_F(RestoringManyTest, ManyFilesReturnAFewPerTurn) {
    const auto archive = putMany();
    std::size_t before = 0;
    handler->restore(archive, {"7.log"}, [&](FunctionRef<void()> block) {
        EXPECT_TRUE(fs::exists(archive));
        block();
        const auto now = names(Folder::upload).size();
        EXPECT_LE(now - before, static_cast<std::size_t>(filesPerTurn));
        before = now;
    });
    EXPECT_EQ(before, 99U);
    EXPECT_FALSE(fs::exists(path(Folder::upload, "7.log")));
    EXPECT_THAT(names(Folder::backup), IsEmpty());
}

TEST_F(RestoringManyTest, LogsDeletedBetweenTwoTurnsDoNotReturn) {
    const auto archive = putMany();
    int turns = 0;
    handler->restore(archive, {}, [&](FunctionRef<void()> block) {
        if (++turns == 3) handler->deleteAllLogs();
        block();
    });
    EXPECT_THAT(names(Folder::upload), IsEmpty());
    EXPECT_THAT(names(Folder::backup), IsEmpty());
}

TEST_F(RestoringManyTest, AFailureInALaterTurnTakesAllBack) {
    class Stuck final : public RelayFileManager {
    public:
        using RelayFileManager::RelayFileManager;
        Result<void> moveItem(const std::string& source, const std::string& destination) override {
            if (destination.ends_with("/Upload/99.log")) return Error{"stuck"}; // the last one
            return RelayFileManager::moveItem(source, destination);
        }
    };
    Stuck disk(fileManager);
    const auto stuck = makeFileHandler(disk);
    const auto archive = putMany();
    console.clear();
    std::size_t most = 0;
    stuck->restore(archive, {}, [&](FunctionRef<void()> block) {
        block();
        most = std::max(most, names(Folder::upload).size());
    });
    EXPECT_GT(most, 0U);
    EXPECT_THAT(names(Folder::upload), IsEmpty());
    EXPECT_THAT(names(Folder::backup), ElementsAre("many.zip"));
    EXPECT_THAT(console.lines(), ElementsAre("\"Failed to restore files: stuck\""));
}

TEST_F(RestoringTest, AFileClosedMeanwhileUnderAnEntrysNameIsNotOverwritten) {
    const auto archive = putArchive("a.zip", {{"a.log", "restored"}});
    handler->restore(archive, {}, [&](FunctionRef<void()> block) {
        put(Folder::upload, "a.log", "closed");
        block();
    });
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "closed");
    EXPECT_EQ(names(Folder::upload).size(), 2U);
}

TEST_F(RestoringTest, ARestoredFileNeverTakesTheNameOfTheOneBeingWritten) {
    handler->write("writtenjsonsplit");
    const auto name = *handler->currentLogFileName();
    restore(putArchive("a.zip", {{name, "restoredjsonsplit"}}));
    EXPECT_FALSE(fs::exists(path(Folder::upload, name)));
    handler->close();
    EXPECT_EQ(bytes(Folder::upload, name), "writtenjsonsplit");
    EXPECT_EQ(names(Folder::upload).size(), 2U);
}

TEST_F(RestoringTest, TheFileToBeWrittenGetsAnotherNameWhenARestoredOneTookIt) {
    handler->close();
    const auto name = *handler->currentLogFileName(); // not made yet
    restore(putArchive("a.zip", {{name, "restoredjsonsplit"}}));
    handler->write("writtenjsonsplit");
    EXPECT_NE(*handler->currentLogFileName(), name);
    handler->close();
    EXPECT_EQ(bytes(Folder::upload, name), "restoredjsonsplit");
    EXPECT_EQ(names(Folder::upload).size(), 3U); // and the empty one
}

TEST_F(RestoringTest, RestoringDoesNotTrim) {
    putSparse(Folder::upload, "01-03-2024T10-00-00-000.log", 10485760);
    restore(putArchive("a.zip", {{"a.log", "1"}}));
    EXPECT_EQ(names(Folder::upload).size(), 2U);
}

// ---- at start ----

using RestoringAtStartTest = StorageFixture;

TEST_F(RestoringAtStartTest, ArchivesLeftBehindBecomeLogFilesAgain) {
    putArchive("a.zip", {{"a.log", "1"}, {"b.log", "2"}});
    putArchive("b.zip", {{"c.log", "3"}});
    makeFileHandler();
    EXPECT_THAT(names(Folder::upload), ElementsAre("a.log", "b.log", "c.log"));
    EXPECT_THAT(names(Folder::backup), IsEmpty());
}

TEST_F(RestoringAtStartTest, AFormerApplicationsArchivesToo) {
    putArchive("a.zip", {{"a.log", "1"}});
    makeFileHandler(false);
    EXPECT_THAT(names(Folder::upload), ElementsAre("a.log"));
}

TEST_F(RestoringAtStartTest, AnArchiveOnItsWayStays) {
    putArchive("a.zip", {{"a.log", "1"}});
    putArchive("b.zip", {{"b.log", "2"}});
    makeFileHandler(false, [](std::string_view name) { return name == "a.zip"; });
    EXPECT_THAT(names(Folder::backup), ElementsAre("a.zip"));
    EXPECT_THAT(names(Folder::upload), ElementsAre("b.log"));
}

TEST_F(RestoringAtStartTest, AnArchiveBeingRestoredByAnotherThreadIsLeftToIt) {
    const auto archive = putArchive("a.zip", {{"a.log", "1"}, {"b.log", "2"}});
    const auto handler = makeFileHandler(false, [](std::string_view) { return true; });
    handler->restore(archive, {"a.log"}, [&](FunctionRef<void()> block) {
        makeFileHandler(false);
        block();
    });
    EXPECT_THAT(names(Folder::upload), ElementsAre("b.log"));
}

TEST_F(RestoringAtStartTest, ADamagedArchiveNeverBlocksTheOthers) {
    for (const auto* name : {"a.zip", "b.zip", "c.zip"}) putArchive(name, {{name + ".log"s, "onejsonsplit"}});
    writeFile(path(Folder::backup, "b.zip"), "no archive at all");
    makeFileHandler();
    EXPECT_THAT(names(Folder::backup), ElementsAre("b.zip"));
    EXPECT_THAT(names(Folder::upload), ElementsAre("a.zip.log", "c.zip.log"));
    EXPECT_THAT(console.lines(), Contains(StartsWith("\"Failed to restore files: ")));
}

TEST_F(RestoringAtStartTest, WhatReturnsCountsForTheBudgetAtOnce) {
    putArchive("a.zip", {{"08-03-2024T10-00-00-000.log", "1"}});
    putSparse(Folder::upload, "01-03-2024T10-00-00-000.log", 10485759);
    makeFileHandler();
    EXPECT_THAT(names(Folder::upload), ElementsAre("08-03-2024T10-00-00-000.log"));
}

TEST_F(RestoringAtStartTest, AKillBetweenArchiveAndDeletionSendsNothingTwice) {
    put(Folder::upload, "a.log", "1");
    put(Folder::upload, "b.log", "2");
    putArchive("a.zip", {{"a.log", "1"}, {"b.log", "2"}});
    makeFileHandler();
    EXPECT_THAT(names(Folder::upload), ElementsAre("a.log", "b.log"));
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "1");
    EXPECT_THAT(names(Folder::backup), IsEmpty());
}

TEST_F(RestoringAtStartTest, TheEmptyFileThatAKilledRunHeldANameByGivesItBack) {
    put(Folder::events, "a.log", ""); // killed before a.log was in place
    put(Folder::events, "b.log", ""); // or right after b.log was
    put(Folder::upload, "b.log", "2");
    putArchive("a.zip", {{"a.log", "1"}, {"b.log", "2"}});
    makeFileHandler(false);
    EXPECT_THAT(names(Folder::upload), ElementsAre("a.log", "b.log"));
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "1");
    EXPECT_THAT(names(Folder::events), IsEmpty());
}

} // namespace
} // namespace tallyfoot::testing
