#include "RelayFileManager.h"
#include "StorageFixture.h"

#include <filesystem>

namespace tallyfoot::testing {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

namespace fs = std::filesystem;

constexpr std::uint64_t MiB = 1048576;

using FileHandlerTest = StorageFixture;

TEST_F(FileHandlerTest, StartTakesTheThresholdsFromTheConfiguration) {
    const auto handler = makeFileHandler();
    EXPECT_EQ(handler->storageMonitor().thresholdFileSize, 10485760.0F);
    EXPECT_EQ(handler->storageMonitor().thresholdStorageSize, 10485760.0F);
}

TEST_F(FileHandlerTest, StartOnACleanDeviceMakesAnEmptyFileNamedByTheDate) {
    const auto handler = makeFileHandler();
    EXPECT_EQ(handler->currentLogFileName(), firstName);
    EXPECT_EQ(handler->currentFilePath(), path(Folder::events, firstName));
    EXPECT_EQ(bytes(Folder::events, firstName), "");
    const auto url = "file://" + path(Folder::events, firstName);
    EXPECT_THAT(console.lines(),
                ElementsAre("\"Current log filename: 07-03-2024T14-05-09-123.log\"",
                            "\"Current log filepath: " + url + "\"", "\"File created at path: " + url + "\""));
}

TEST_F(FileHandlerTest, StartReusesTheFileOfAnEarlierRun) {
    put(Folder::events, "06-03-2024T10-00-00-000.log", "onejsonsplit");
    const auto handler = makeFileHandler();
    EXPECT_EQ(handler->currentLogFileName(), "06-03-2024T10-00-00-000.log");
    EXPECT_THAT(console.lines(), ElementsAre("\"Current log filename: 06-03-2024T10-00-00-000.log\"",
                                             "\"Current log filepath: file://"
                                                 + path(Folder::events, "06-03-2024T10-00-00-000.log") + "\""));
    handler->write("twojsonsplit");
    EXPECT_EQ(bytes(Folder::events, "06-03-2024T10-00-00-000.log"), "onejsonsplittwojsonsplit");
}

TEST_F(FileHandlerTest, OfSeveralFilesStartReusesTheNewest) {
    put(Folder::events, "09-03-2024T10-00-00-000.log", "1");
    const auto older = fileManager.attributesOfItem(path(Folder::events, "09-03-2024T10-00-00-000.log")).value();
    const auto newest = path(Folder::events, "06-03-2024T10-00-00-000.log");
    do {
        fs::remove(newest);
        writeFile(newest, "2");
    } while (fileManager.attributesOfItem(newest).value().creationDate == older.creationDate);
    EXPECT_EQ(makeFileHandler()->currentLogFileName(), "06-03-2024T10-00-00-000.log");
}

TEST_F(FileHandlerTest, StartReusesOnlyLogFiles) {
    put(Folder::events, "notes.txt", "1");
    put(Folder::events, ".hidden.log", "1");
    fs::create_directories(path(Folder::events, "folder.log"));
    fs::create_symlink("nowhere", path(Folder::events, "link.log"));
    EXPECT_EQ(makeFileHandler()->currentLogFileName(), firstName);
}

TEST_F(FileHandlerTest, TwoRecordsStandInARowWithoutALineFeed) {
    const auto handler = makeFileHandler();
    handler->write("line1jsonsplit");
    handler->write("line2jsonsplit");
    EXPECT_EQ(bytes(Folder::events, firstName), "line1jsonsplitline2jsonsplit");
}

TEST_F(FileHandlerTest, WritingSaysNothing) {
    const auto handler = makeFileHandler();
    console.clear();
    handler->write("line1jsonsplit");
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(FileHandlerTest, AFragmentOfAKilledRunIsCutOffBeforeTheNextRecord) {
    put(Folder::events, firstName, "onejsonsplit{\"tor");
    const auto handler = makeFileHandler();
    handler->write("twojsonsplit");
    EXPECT_EQ(bytes(Folder::events, firstName), "onejsonsplittwojsonsplit");
}

TEST_F(FileHandlerTest, AFragmentIsCutOffAlsoWhenNothingWasWrittenInThisRun) {
    put(Folder::events, firstName, "onejsonsplit{\"tor");
    makeFileHandler()->close();
    EXPECT_EQ(bytes(Folder::upload, firstName), "onejsonsplit");
}

// ---- the size threshold ----

class ThresholdTest : public StorageFixture {
protected:
    void SetUp() override {
        handler = makeFileHandler();
        handler->setTriggerUpload([this] { ++triggers; });
    }
    void grow(std::uint64_t size) { handler->write(std::string(size, 'x')); }

    std::unique_ptr<FileHandler> handler;
    int triggers = 0;
};

TEST_F(ThresholdTest, AFileOneByteShortOfTheThresholdIsNotFull) {
    grow(10 * MiB - 1);
    EXPECT_EQ(triggers, 0);
}

TEST_F(ThresholdTest, ExactlyTheThresholdTriggers) {
    grow(10 * MiB - 1);
    grow(1);
    EXPECT_EQ(triggers, 1);
    grow(1);
    EXPECT_EQ(triggers, 2);
}

TEST_F(ThresholdTest, IgnoringTheThresholdTriggersOnEachRecord) {
    settings.ignoreFileSizeThreshold = true;
    for (int count = 1; count <= 3; ++count) {
        grow(1);
        EXPECT_EQ(triggers, count);
    }
    settings.ignoreFileSizeThreshold = false;
    grow(1);
    EXPECT_EQ(triggers, 3);
}

TEST_F(ThresholdTest, AFullFileWithoutATriggerIsLeftAlone) {
    handler->setTriggerUpload({});
    grow(10 * MiB);
    EXPECT_EQ(fs::file_size(path(Folder::events, firstName)), 10 * MiB);
    EXPECT_THAT(names(Folder::upload), IsEmpty());
}

TEST_F(ThresholdTest, TheTriggerMayCloseTheFileAndReplaceItself) {
    settings.ignoreFileSizeThreshold = true;
    handler->setTriggerUpload([this] {
        ++triggers;
        handler->close();
        handler->setTriggerUpload({});
    });
    handler->write("onejsonsplit");
    handler->write("twojsonsplit");
    EXPECT_EQ(triggers, 1);
    EXPECT_EQ(bytes(Folder::upload, firstName), "onejsonsplit");
    EXPECT_EQ(bytes(Folder::events, *handler->currentLogFileName()), "twojsonsplit");
}

// ---- closing ----

TEST_F(FileHandlerTest, ClosingMovesTheFileToUploadAndChoosesANewName) {
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    clock.advance(std::chrono::seconds(1));
    handler->close();
    EXPECT_EQ(bytes(Folder::upload, firstName), "onejsonsplit");
    EXPECT_EQ(handler->currentLogFileName(), "07-03-2024T14-05-10-123.log");
    EXPECT_THAT(names(Folder::events), IsEmpty());
}

TEST_F(FileHandlerTest, TheFileAfterAClosedOneIsMadeByTheNextRecord) {
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    handler->close();
    console.clear();
    handler->write("twojsonsplit");
    const auto name = *handler->currentLogFileName();
    EXPECT_EQ(bytes(Folder::events, name), "twojsonsplit");
    EXPECT_EQ(bytes(Folder::upload, firstName), "onejsonsplit");
    EXPECT_THAT(console.lines(), ElementsAre("\"File created at path: file://" + path(Folder::events, name) + "\""));
}

TEST_F(FileHandlerTest, NamesOfOneMillisecondAreAllDifferent) {
    const auto handler = makeFileHandler();
    for (int count = 0; count < 5; ++count) {
        handler->write(std::to_string(count) + "jsonsplit");
        handler->close();
    }
    ASSERT_EQ(names(Folder::upload).size(), 5U);
    EXPECT_EQ(bytes(Folder::upload, "07-03-2024T14-05-09-127.log"), "4jsonsplit");
}

TEST_F(FileHandlerTest, ClosingReplacesAFileOfTheSameNameInUpload) {
    put(Folder::events, firstName, "newjsonsplit");
    put(Folder::upload, firstName, "oldjsonsplit");
    makeFileHandler()->close();
    EXPECT_EQ(bytes(Folder::upload, firstName), "newjsonsplit");
}

TEST_F(FileHandlerTest, ClosingAFileNotYetMadeOnlyReportsTheFailedMove) {
    const auto handler = makeFileHandler();
    handler->close();
    const auto name = *handler->currentLogFileName();
    console.clear();
    handler->close();
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("\"Failed to move a file: ")));
    EXPECT_NE(*handler->currentLogFileName(), name);
    handler->write("onejsonsplit");
    EXPECT_EQ(bytes(Folder::events, *handler->currentLogFileName()), "onejsonsplit");
}

TEST_F(FileHandlerTest, AnEmptyFileMovesToUploadTooAndGoesWithTheNextPacking) {
    const auto handler = makeFileHandler();
    handler->close();
    EXPECT_THAT(names(Folder::upload), ElementsAre(firstName));
    handler->zip(directly);
    EXPECT_THAT(names(Folder::upload), IsEmpty());
    EXPECT_THAT(names(Folder::backup), IsEmpty());
}

TEST_F(FileHandlerTest, ClosingTakesAlongWhatAnEarlierFailureLeftInEvents) {
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    put(Folder::events, "01-03-2024T10-00-00-000.log", "oldjsonsplit{\"tor");
    put(Folder::events, "02-03-2024T10-00-00-000.log", "");
    put(Folder::events, "notes.txt", "1");
    handler->close();
    EXPECT_EQ(bytes(Folder::upload, firstName), "onejsonsplit");
    EXPECT_EQ(bytes(Folder::upload, "01-03-2024T10-00-00-000.log"), "oldjsonsplit");
    EXPECT_THAT(names(Folder::events), ElementsAre("02-03-2024T10-00-00-000.log", "notes.txt"));
}

TEST_F(FileHandlerTest, ALeftoverReplacesNothingInUpload) {
    const auto handler = makeFileHandler();
    put(Folder::events, "01-03-2024T10-00-00-000.log", "onejsonsplit");
    put(Folder::upload, "01-03-2024T10-00-00-000.log", "twojsonsplit");
    handler->close();
    EXPECT_EQ(bytes(Folder::upload, "01-03-2024T10-00-00-000.log"), "twojsonsplit");
    EXPECT_EQ(bytes(Folder::upload, "07-03-2024T14-05-09-124.log"), "onejsonsplit");
}

// ---- a file removed under us ----

TEST_F(FileHandlerTest, ARecordForAFileRemovedUnderneathLandsInANewOne) {
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    fs::remove(path(Folder::events, firstName));
    console.clear();
    handler->write("twojsonsplit");
    EXPECT_EQ(bytes(Folder::events, firstName), "twojsonsplit");
    EXPECT_THAT(console.lines(),
                ElementsAre("\"File created at path: file://" + path(Folder::events, firstName) + "\""));
    handler->write("threejsonsplit");
    EXPECT_EQ(bytes(Folder::events, firstName), "twojsonsplitthreejsonsplit");
}

TEST_F(FileHandlerTest, ARecordSurvivesTheRemovalOfTheWholeTree) {
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    fs::remove_all(support / "Tallyfoot");
    console.clear();
    handler->write("twojsonsplit");
    EXPECT_EQ(bytes(Folder::events, firstName), "twojsonsplit");
    EXPECT_TRUE(fs::is_directory(path(Folder::upload)));
    EXPECT_THAT(console.lines(),
                ElementsAre("\"File created at path: file://" + path(Folder::events, firstName) + "\""));
}

TEST_F(FileHandlerTest, ARecordStaysInTheTreeWhenTheFormerOneIsMovedAway) {
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    handler->write("twojsonsplit");
    fs::rename(support / "Tallyfoot/Shop", support / "aside");
    handler->write("threejsonsplit");
    EXPECT_EQ(readFile(support / ("aside/Events/"s + firstName)), "onejsonsplittwojsonsplit");
    EXPECT_EQ(bytes(Folder::events, firstName), "threejsonsplit");
}

// ---- other applications ----

TEST_F(FileHandlerTest, AFormerApplicationsHandlerChoosesAndAnnouncesNothing) {
    const auto handler = makeFileHandler(false);
    EXPECT_EQ(handler->currentLogFileName(), std::nullopt);
    EXPECT_THAT(names(Folder::events), IsEmpty());
    EXPECT_TRUE(fs::is_directory(path(Folder::backup)));
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(FileHandlerTest, WhatAFormerApplicationLeftInEventsMovesToUpload) {
    put(Folder::events, "01-03-2024T10-00-00-000.log", "onejsonsplit");
    put(Folder::events, "02-03-2024T10-00-00-000.log", "twojsonsplit{\"tor");
    put(Folder::events, "03-03-2024T10-00-00-000.log", "");
    makeFileHandler(false);
    EXPECT_EQ(bytes(Folder::upload, "01-03-2024T10-00-00-000.log"), "onejsonsplit");
    EXPECT_EQ(bytes(Folder::upload, "02-03-2024T10-00-00-000.log"), "twojsonsplit");
    EXPECT_THAT(names(Folder::events), ElementsAre("03-03-2024T10-00-00-000.log"));
    EXPECT_THAT(console.lines(), IsEmpty());
}

using FileHandlerDeathTest = FileHandlerTest;

TEST_F(FileHandlerDeathTest, TheCurrentPathWithoutANameIsFatal) {
    const auto handler = makeFileHandler(false);
    EXPECT_DEATH((void)handler->currentFilePath(), "name");
}

// ---- trimming ----

TEST_F(FileHandlerTest, UploadBelowItsBudgetIsNotTrimmed) {
    const auto handler = makeFileHandler();
    putSparse(Folder::upload, "01-03-2024T10-00-00-000.log", 5 * MiB);
    putSparse(Folder::upload, "02-03-2024T10-00-00-000.log", 5 * MiB - 1);
    handler->trim();
    EXPECT_EQ(names(Folder::upload).size(), 2U);
}

TEST_F(FileHandlerTest, UploadAtExactlyItsBudgetIsTrimmedToHalfOfIt) {
    const auto handler = makeFileHandler();
    putSparse(Folder::upload, "02-03-2024T10-00-00-000.log", 2 * MiB);
    putSparse(Folder::upload, "01-03-2024T10-00-00-000.log", 3 * MiB);
    putSparse(Folder::upload, "03-03-2024T10-00-00-000.log", 1 * MiB);
    putSparse(Folder::upload, "04-03-2024T10-00-00-000.log", 4 * MiB);
    handler->trim(); // 3 and 2 go, oldest first: exactly half is left
    EXPECT_THAT(names(Folder::upload), ElementsAre("03-03-2024T10-00-00-000.log", "04-03-2024T10-00-00-000.log"));
}

TEST_F(FileHandlerTest, TrimmingGoesOnUntilAtMostHalfTheBudgetIsLeft) {
    const auto handler = makeFileHandler();
    putSparse(Folder::upload, "01-03-2024T10-00-00-000.log", 5 * MiB);
    putSparse(Folder::upload, "02-03-2024T10-00-00-000.log", 1);
    putSparse(Folder::upload, "03-03-2024T10-00-00-000.log", 5 * MiB);
    putSparse(Folder::upload, "04-03-2024T10-00-00-000.log", 1);
    handler->trim(); // 5 MiB + 2 bytes after the first, + 1 after the second, then below
    EXPECT_THAT(names(Folder::upload), ElementsAre("04-03-2024T10-00-00-000.log"));
}

TEST_F(FileHandlerTest, TrimmingOrdersByDateAndNotByText) {
    const auto handler = makeFileHandler();
    putSparse(Folder::upload, "01-02-2024T10-00-00-000.log", 6 * MiB); // later, though it sorts first as a text
    putSparse(Folder::upload, "31-12-2023T10-00-00-000.log", 6 * MiB);
    handler->trim(); // neither fits into half the budget, so both would have to go
    EXPECT_THAT(names(Folder::upload), IsEmpty());
    putSparse(Folder::upload, "01-02-2024T10-00-00-000.log", 5 * MiB);
    putSparse(Folder::upload, "31-12-2023T10-00-00-000.log", 5 * MiB);
    handler->trim();
    EXPECT_THAT(names(Folder::upload), ElementsAre("01-02-2024T10-00-00-000.log"));
}

TEST_F(FileHandlerTest, AFileWhoseNameIsNoDateIsOrderedByItsCreation) {
    const auto handler = makeFileHandler();
    putSparse(Folder::upload, "notes.log", 5 * MiB); // made now, long after 2024
    putSparse(Folder::upload, "07-03-2024T10-00-00-000.log", 5 * MiB);
    handler->trim();
    EXPECT_THAT(names(Folder::upload), ElementsAre("notes.log"));
    putSparse(Folder::upload, "07-03-2199T10-00-00-000.log", 5 * MiB);
    handler->trim();
    EXPECT_THAT(names(Folder::upload), ElementsAre("07-03-2199T10-00-00-000.log"));
}

TEST_F(FileHandlerTest, StorageIsTrimmedAtStart) {
    putSparse(Folder::upload, "01-03-2024T10-00-00-000.log", 5 * MiB);
    putSparse(Folder::upload, "02-03-2024T10-00-00-000.log", 5 * MiB);
    makeFileHandler();
    EXPECT_THAT(names(Folder::upload), ElementsAre("02-03-2024T10-00-00-000.log"));
}

TEST_F(FileHandlerTest, StorageIsTrimmedBeforeANewFileIsMadeAndOnlyThen) {
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    putSparse(Folder::upload, "01-03-2024T10-00-00-000.log", 6 * MiB);
    putSparse(Folder::upload, "02-03-2024T10-00-00-000.log", 4 * MiB);
    handler->write("twojsonsplit");
    EXPECT_EQ(names(Folder::upload).size(), 2U);
    handler->close();
    EXPECT_EQ(names(Folder::upload).size(), 3U);
    handler->write("threejsonsplit");
    EXPECT_THAT(names(Folder::upload), ElementsAre("02-03-2024T10-00-00-000.log", firstName));
}

TEST_F(FileHandlerTest, TheBudgetIsThatOfTheConfiguration) {
    configuration = UploadConfiguration::defaultConfiguration(); // 5 MiB
    putSparse(Folder::upload, "01-03-2024T10-00-00-000.log", 3 * MiB);
    putSparse(Folder::upload, "02-03-2024T10-00-00-000.log", 2 * MiB);
    makeFileHandler();
    EXPECT_THAT(names(Folder::upload), ElementsAre("02-03-2024T10-00-00-000.log"));
}

// ---- deleting all ----

TEST_F(FileHandlerTest, DeletingAllLogsEmptiesEveryFolder) {
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    put(Folder::events, "other.log", "1");
    put(Folder::upload, "a.log", "1");
    put(Folder::upload, ".hidden", "1");
    put(Folder::backup, "a.zip", "1");
    console.clear();
    handler->deleteAllLogs();
    for (const auto folder : {Folder::events, Folder::upload, Folder::backup}) {
        EXPECT_THAT(names(folder), IsEmpty());
        EXPECT_TRUE(fs::is_directory(path(folder)));
    }
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(FileHandlerTest, WritingGoesOnAfterAllLogsWereDeleted) {
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    handler->deleteAllLogs();
    handler->write("twojsonsplit");
    EXPECT_EQ(bytes(Folder::events, *handler->currentLogFileName()), "twojsonsplit");
}

TEST_F(FileHandlerTest, NothingIsPrintedWhileTheConsoleIsOff) {
    settings.showOutput = false;
    const auto handler = makeFileHandler();
    handler->write("onejsonsplit");
    handler->close();
    handler->close();
    handler->zip(directly);
    handler->restore(path(Folder::backup, "none.zip"), {}, directly);
    EXPECT_THAT(console.lines(), IsEmpty());
}

} // namespace
} // namespace tallyfoot::testing
