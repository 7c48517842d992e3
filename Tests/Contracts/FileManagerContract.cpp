#include "Contracts/Implementation.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Platform/Posix/PosixFileManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <memory>

namespace tallyfoot::testing {

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class FileManagerContract : public ::testing::TestWithParam<Implementation<FileManager>> {
protected:
    std::string operator()(const std::string& name) const { return folder_ / name; }

    std::vector<std::string> names() const { return files_->contentsOfDirectory(folder_.path().string()).value(); }

    TemporaryFolder folder_;
    std::shared_ptr<FileManager> files_ = GetParam().make();
};

// Existence

TEST_P(FileManagerContract, NothingExistsWhereNothingWasMade) {
    EXPECT_FALSE(files_->fileExists(folder_ / "a"));
    EXPECT_FALSE(files_->directoryExists(folder_ / "a"));
    EXPECT_FALSE(files_->fileExists(""));
}

TEST_P(FileManagerContract, AFileExistsButIsNoDirectory) {
    writeFile(folder_ / "a", "1");
    EXPECT_TRUE(files_->fileExists(folder_ / "a"));
    EXPECT_FALSE(files_->directoryExists(folder_ / "a"));
}

TEST_P(FileManagerContract, AFolderExistsInBothWays) {
    EXPECT_TRUE(files_->fileExists(folder_.path().string()));
    EXPECT_TRUE(files_->directoryExists(folder_.path().string()));
}

TEST_P(FileManagerContract, ADanglingLinkExists) {
    std::filesystem::create_symlink("nowhere", folder_ / "link");
    EXPECT_TRUE(files_->fileExists(folder_ / "link"));
    EXPECT_FALSE(files_->directoryExists(folder_ / "link"));
}

TEST_P(FileManagerContract, APathWithAZeroByteNamesNothing) {
    writeFile(folder_ / "a", "1");
    const auto path = (folder_ / "a") + std::string("\0b", 2);
    EXPECT_FALSE(files_->fileExists(path));
    EXPECT_FALSE(files_->contents(path));
    EXPECT_FALSE(files_->attributesOfItem(path));
    EXPECT_FALSE(files_->writeAtomically(path, "2"));
    EXPECT_FALSE(files_->createDirectory(path));
    EXPECT_FALSE(files_->removeItem(path));
    EXPECT_FALSE(files_->moveItem(path, folder_ / "c"));
    EXPECT_FALSE(files_->replaceItem(folder_ / "a", path));
    EXPECT_FALSE(files_->fileHandleForWriting(path));
    EXPECT_EQ(readFile(folder_ / "a"), "1");
    EXPECT_THAT(names(), UnorderedElementsAre("a"));
}

// Attributes

TEST_P(FileManagerContract, AttributesTellSizeKindAndCreation) {
    const auto before = std::chrono::system_clock::now();
    writeFile(folder_ / "a", "12345");
    const auto attributes = files_->attributesOfItem(folder_ / "a");
    ASSERT_TRUE(attributes);
    EXPECT_EQ(attributes.value().size, 5U);
    EXPECT_TRUE(attributes.value().isRegular);
    EXPECT_LT(attributes.value().creationDate, before + std::chrono::minutes(1));
    EXPECT_GT(attributes.value().creationDate, before - std::chrono::minutes(1)); // file systems round
    EXPECT_FALSE(files_->attributesOfItem(folder_.path().string()).value().isRegular);
}

TEST_P(FileManagerContract, AttributesOfALinkAreItsOwn) {
    writeFile(folder_ / "a", "12345");
    std::filesystem::create_symlink(folder_ / "a", folder_ / "link");
    EXPECT_FALSE(files_->attributesOfItem(folder_ / "link").value().isRegular);
}

TEST_P(FileManagerContract, AttributesOfNothingAreAnErrorThatNamesTheFile) {
    const auto attributes = files_->attributesOfItem(folder_ / "missing.log");
    ASSERT_FALSE(attributes);
    EXPECT_THAT(attributes.error().description, HasSubstr("missing.log"));
    EXPECT_THAT(attributes.error().description, HasSubstr("No such file or directory"));
}

// Listing

TEST_P(FileManagerContract, ContentsAreTheNamesHiddenOnesIncluded) {
    writeFile(folder_ / "a", "");
    writeFile(folder_ / ".hidden", "");
    writeFile(folder_ / "inner/deep", "");
    EXPECT_THAT(names(), UnorderedElementsAre("a", ".hidden", "inner"));
}

TEST_P(FileManagerContract, ContentsOfAnEmptyFolderAreEmpty) { EXPECT_THAT(names(), IsEmpty()); }

TEST_P(FileManagerContract, ContentsOfNoFolderAreAnError) {
    writeFile(folder_ / "a", "");
    EXPECT_FALSE(files_->contentsOfDirectory(folder_ / "a"));
    EXPECT_FALSE(files_->contentsOfDirectory(folder_ / "missing"));
}

TEST_P(FileManagerContract, SubpathsGoAllTheWayDown) {
    writeFile(folder_ / "a", "");
    writeFile(folder_ / "inner/.b", "");
    writeFile(folder_ / "inner/deep/c", "");
    EXPECT_THAT(files_->subpathsOfDirectory(folder_.path().string()).value(),
                UnorderedElementsAre("a", "inner", "inner/.b", "inner/deep", "inner/deep/c"));
}

TEST_P(FileManagerContract, SubpathsDoNotFollowLinks) {
    writeFile(folder_ / "inner/a", "");
    std::filesystem::create_symlink("..", folder_ / "inner/up");
    EXPECT_THAT(files_->subpathsOfDirectory(folder_ / "inner").value(), UnorderedElementsAre("a", "up"));
}

TEST_P(FileManagerContract, SubpathsOfNoFolderAreAnError) {
    EXPECT_FALSE(files_->subpathsOfDirectory(folder_ / "missing"));
}

// Folders

TEST_P(FileManagerContract, CreatesAFolderWithItsParents) {
    EXPECT_TRUE(files_->createDirectory(folder_ / "a/b/c"));
    EXPECT_TRUE(files_->directoryExists(folder_ / "a/b/c"));
}

TEST_P(FileManagerContract, CreatingAnExistingFolderIsFine) {
    writeFile(folder_ / "a/b", "kept");
    EXPECT_TRUE(files_->createDirectory(folder_ / "a"));
    EXPECT_EQ(readFile(folder_ / "a/b"), "kept");
}

TEST_P(FileManagerContract, CreatesAFolderWhosePathEndsInASlash) {
    EXPECT_TRUE(files_->createDirectory(folder_ / "a/b/"));
    EXPECT_TRUE(files_->directoryExists(folder_ / "a/b"));
}

TEST_P(FileManagerContract, AFileInTheWayOfAFolderIsAnErrorAndStays) {
    writeFile(folder_ / "a", "kept");
    EXPECT_FALSE(files_->createDirectory(folder_ / "a"));
    EXPECT_FALSE(files_->createDirectory(folder_ / "a/b"));
    EXPECT_EQ(readFile(folder_ / "a"), "kept");
}

// Moving

TEST_P(FileManagerContract, MovesAFile) {
    writeFile(folder_ / "a", "1");
    ASSERT_TRUE(files_->createDirectory(folder_ / "inner"));
    EXPECT_TRUE(files_->moveItem(folder_ / "a", folder_ / "inner/b"));
    EXPECT_FALSE(files_->fileExists(folder_ / "a"));
    EXPECT_EQ(readFile(folder_ / "inner/b"), "1");
}

TEST_P(FileManagerContract, MovesAFolderWithItsContents) {
    writeFile(folder_ / "a/deep/file", "1");
    EXPECT_TRUE(files_->moveItem(folder_ / "a", folder_ / "b"));
    EXPECT_EQ(readFile(folder_ / "b/deep/file"), "1");
}

TEST_P(FileManagerContract, MovingReplacesNothing) {
    writeFile(folder_ / "a", "1");
    writeFile(folder_ / "b", "2");
    const auto moved = files_->moveItem(folder_ / "a", folder_ / "b");
    ASSERT_FALSE(moved);
    EXPECT_THAT(moved.error().description, HasSubstr("File exists"));
    EXPECT_EQ(readFile(folder_ / "a"), "1");
    EXPECT_EQ(readFile(folder_ / "b"), "2");
}

TEST_P(FileManagerContract, MovingNothingIsAnError) {
    EXPECT_FALSE(files_->moveItem(folder_ / "a", folder_ / "b"));
    EXPECT_FALSE(files_->replaceItem(folder_ / "a", folder_ / "b"));
}

TEST_P(FileManagerContract, MovingIntoAMissingFolderLeavesTheSource) {
    writeFile(folder_ / "a", "1");
    EXPECT_FALSE(files_->moveItem(folder_ / "a", folder_ / "missing/a"));
    EXPECT_EQ(readFile(folder_ / "a"), "1");
}

TEST_P(FileManagerContract, ReplacingTakesTheDestinationsPlace) {
    writeFile(folder_ / "a", "1");
    writeFile(folder_ / "b", "2");
    EXPECT_TRUE(files_->replaceItem(folder_ / "a", folder_ / "b"));
    EXPECT_FALSE(files_->fileExists(folder_ / "a"));
    EXPECT_EQ(readFile(folder_ / "b"), "1");
}

// Removing

TEST_P(FileManagerContract, RemovesAFile) {
    writeFile(folder_ / "a", "1");
    EXPECT_TRUE(files_->removeItem(folder_ / "a"));
    EXPECT_THAT(names(), IsEmpty());
}

TEST_P(FileManagerContract, RemovesAFolderWithEverythingInIt) {
    writeFile(folder_ / "a/b/c/d", "1");
    writeFile(folder_ / "a/.hidden", "1");
    std::filesystem::create_directories(folder_ / "a/empty/inner");
    EXPECT_TRUE(files_->removeItem(folder_ / "a"));
    EXPECT_THAT(names(), IsEmpty());
}

TEST_P(FileManagerContract, RemovingALinkLeavesWhatItPointsTo) {
    writeFile(folder_ / "a/file", "1");
    std::filesystem::create_directories(folder_ / "b");
    std::filesystem::create_symlink("../a", folder_ / "b/link");
    EXPECT_TRUE(files_->removeItem(folder_ / "b"));
    EXPECT_EQ(readFile(folder_ / "a/file"), "1");
}

TEST_P(FileManagerContract, RemovingNothingIsAnErrorThatNamesIt) {
    const auto removed = files_->removeItem(folder_ / "missing.log");
    ASSERT_FALSE(removed);
    EXPECT_THAT(removed.error().description, HasSubstr("missing.log"));
}

TEST_P(FileManagerContract, RemovesAVeryDeepFolder) {
    std::string path = folder_ / "deep";
    ASSERT_TRUE(files_->createDirectory(path));
    for (int level = 0; level < 1500; ++level) path += "/d";
    ASSERT_TRUE(files_->createDirectory(path));
    EXPECT_EQ(files_->subpathsOfDirectory(folder_ / "deep").value().size(), 1500U);
    EXPECT_TRUE(files_->removeItem(folder_ / "deep"));
    EXPECT_THAT(names(), IsEmpty());
}

// Contents

TEST_P(FileManagerContract, ReadsWhatWasWritten) {
    std::string bytes;
    for (int index = 0; index < 100'000; ++index) bytes += static_cast<char>(index % 251);
    EXPECT_TRUE(files_->writeAtomically(folder_ / "a", bytes));
    EXPECT_EQ(files_->contents(folder_ / "a").value(), bytes);
    EXPECT_EQ(readFile(folder_ / "a"), bytes);
}

TEST_P(FileManagerContract, WritesAnEmptyFile) {
    EXPECT_TRUE(files_->writeAtomically(folder_ / "a", ""));
    EXPECT_EQ(files_->attributesOfItem(folder_ / "a").value().size, 0U);
    EXPECT_EQ(files_->contents(folder_ / "a").value(), "");
}

TEST_P(FileManagerContract, WritingReplacesNothingAndLeavesNothingBeside) {
    writeFile(folder_ / "a", "old");
    EXPECT_FALSE(files_->writeAtomically(folder_ / "a", "new"));
    EXPECT_EQ(readFile(folder_ / "a"), "old");
    EXPECT_THAT(names(), UnorderedElementsAre("a"));
}

TEST_P(FileManagerContract, AFailedWriteLeavesNothingBehind) {
    std::filesystem::create_directories(folder_ / "a/inner"); // a folder cannot be replaced by a file
    EXPECT_FALSE(files_->writeAtomically(folder_ / "a", "new"));
    EXPECT_FALSE(files_->writeAtomically(folder_ / "missing/a", "new"));
    EXPECT_THAT(names(), UnorderedElementsAre("a"));
    EXPECT_TRUE(files_->directoryExists(folder_ / "a/inner"));
}

TEST_P(FileManagerContract, AReaderSeesTheOldFileUntilItLetsGo) {
    writeFile(folder_ / "a", "old");
    writeFile(folder_ / "b", "newer");
    const auto handle = files_->fileHandleForWriting(folder_ / "a");
    ASSERT_TRUE(handle);
    ASSERT_TRUE(files_->replaceItem(folder_ / "b", folder_ / "a"));
    std::array<char, 8> buffer{};
    EXPECT_EQ(handle.value()->read(0, buffer).value(), 3U);
    EXPECT_FALSE(handle.value()->isInPlace());
}

TEST_P(FileManagerContract, AFileNameOfFullLengthCanBeWritten) {
    const std::string name(255, 'n');
    EXPECT_TRUE(files_->writeAtomically(folder_ / name, "1"));
    EXPECT_FALSE(files_->writeAtomically(folder_ / (name + "n"), "1"));
    EXPECT_THAT(names(), UnorderedElementsAre(name));
}

TEST_P(FileManagerContract, ContentsOfNoFileAreAnError) {
    EXPECT_FALSE(files_->contents(folder_ / "missing"));
    EXPECT_FALSE(files_->contents(folder_.path().string()));
}

// Handles

TEST_P(FileManagerContract, AHandleNeedsAnExistingFile) {
    EXPECT_FALSE(files_->fileHandleForWriting(folder_ / "a"));
    EXPECT_FALSE(files_->fileHandleForWriting(folder_.path().string()));
    EXPECT_THAT(names(), IsEmpty());
}

class FileHandleContract : public FileManagerContract {
protected:
    FileHandleContract() { writeFile(folder_ / "a", "start"); }

    std::string text() const { return readFile(folder_ / "a"); }

    FileHandle& handle() { return *handle_.value(); }

private:
    Result<std::unique_ptr<FileHandle>> handle_{std::unique_ptr<FileHandle>()};

protected:
    void SetUp() override {
        handle_ = files_->fileHandleForWriting(folder_ / "a");
        ASSERT_TRUE(handle_) << handle_.error().description;
    }
};

TEST_P(FileHandleContract, AppendsAtTheEnd) {
    EXPECT_TRUE(handle().append(" middle"));
    EXPECT_TRUE(handle().append(""));
    EXPECT_TRUE(handle().append(std::string_view(" \0end", 5)));
    EXPECT_EQ(text(), std::string("start middle \0end", 17));
}

TEST_P(FileHandleContract, AppendsBehindWhatOthersAppended) {
    ASSERT_TRUE(handle().append("1"));
    auto other = files_->fileHandleForWriting(folder_ / "a");
    ASSERT_TRUE(other);
    ASSERT_TRUE(other.value()->append("2"));
    ASSERT_TRUE(handle().append("3"));
    EXPECT_EQ(text(), "start123");
}

TEST_P(FileHandleContract, TellsTheSizeAfterEachAppend) {
    EXPECT_EQ(handle().size().value(), 5U);
    ASSERT_TRUE(handle().append("12345"));
    EXPECT_EQ(handle().size().value(), 10U);
}

TEST_P(FileHandleContract, IsInPlaceWhateverIsAppended) {
    for (int time = 0; time < 3; ++time) {
        EXPECT_TRUE(handle().isInPlace());
        ASSERT_TRUE(handle().append("more"));
    }
}

TEST_P(FileHandleContract, IsNotInPlaceOnceRemovedButTakesAppends) {
    EXPECT_TRUE(handle().isInPlace());
    ASSERT_TRUE(files_->removeItem(folder_ / "a"));
    EXPECT_FALSE(handle().isInPlace());
    EXPECT_FALSE(handle().isInPlace());
    EXPECT_TRUE(handle().append("goes nowhere, but does no harm"));
}

TEST_P(FileHandleContract, IsNotInPlaceWhenRemovedBeforeTheFirstQuestion) {
    ASSERT_TRUE(files_->removeItem(folder_ / "a"));
    EXPECT_FALSE(handle().isInPlace());
}

TEST_P(FileHandleContract, IsNotInPlaceOnceRenamedUntilItComesBack) {
    EXPECT_TRUE(handle().isInPlace());
    ASSERT_TRUE(files_->moveItem(folder_ / "a", folder_ / "b"));
    EXPECT_FALSE(handle().isInPlace());
    ASSERT_TRUE(files_->moveItem(folder_ / "b", folder_ / "a"));
    EXPECT_TRUE(handle().isInPlace());
    ASSERT_TRUE(files_->moveItem(folder_ / "a", folder_ / "b"));
    EXPECT_FALSE(handle().isInPlace());
}

TEST_P(FileHandleContract, IsNotInPlaceOnceReplaced) {
    EXPECT_TRUE(handle().isInPlace());
    ASSERT_TRUE(files_->writeAtomically(folder_ / "b", "another file"));
    ASSERT_TRUE(files_->replaceItem(folder_ / "b", folder_ / "a"));
    EXPECT_FALSE(handle().isInPlace());
}

TEST_P(FileHandleContract, IsInPlaceAfterAChangeThatLeavesItsName) {
    EXPECT_TRUE(handle().isInPlace());
    std::filesystem::permissions(folder_ / "a", std::filesystem::perms::owner_all);
    EXPECT_TRUE(handle().isInPlace());
    ASSERT_TRUE(files_->removeItem(folder_ / "a"));
    EXPECT_FALSE(handle().isInPlace());
}

TEST_P(FileHandleContract, IsNotInPlaceWithItsFolderRemoved) {
    EXPECT_TRUE(handle().isInPlace());
    std::filesystem::remove_all(folder_.path());
    EXPECT_FALSE(handle().isInPlace());
}

TEST_P(FileHandleContract, IsNotInPlaceOnceAFolderAboveIsRenamed) {
    writeFile(folder_ / "top/inner/a", "1");
    auto handle = files_->fileHandleForWriting(folder_ / "top/inner/a");
    ASSERT_TRUE(handle);
    EXPECT_TRUE(handle.value()->isInPlace());
    ASSERT_TRUE(files_->moveItem(folder_ / "top/inner", folder_ / "top/aside"));
    EXPECT_FALSE(handle.value()->isInPlace());
    ASSERT_TRUE(files_->moveItem(folder_ / "top/aside", folder_ / "top/inner"));
    EXPECT_TRUE(handle.value()->isInPlace());
    ASSERT_TRUE(files_->moveItem(folder_ / "top", folder_ / "aside"));
    EXPECT_FALSE(handle.value()->isInPlace());
}

TEST_P(FileHandleContract, IsNotInPlaceOnceItsFolderIsReplaced) {
    writeFile(folder_ / "inner/a", "1");
    writeFile(folder_ / "other/a", "2");
    auto handle = files_->fileHandleForWriting(folder_ / "inner/a");
    ASSERT_TRUE(handle);
    EXPECT_TRUE(handle.value()->isInPlace());
    ASSERT_TRUE(files_->moveItem(folder_ / "inner", folder_ / "aside"));
    ASSERT_TRUE(files_->moveItem(folder_ / "other", folder_ / "inner"));
    EXPECT_FALSE(handle.value()->isInPlace());
}

TEST_P(FileHandleContract, IsNotInPlaceOnceALinkOnItsPathLeadsElsewhere) {
    namespace fs = std::filesystem;
    writeFile(folder_ / "one/inner/a", "1");
    writeFile(folder_ / "two/inner/a", "2");
    fs::create_directory_symlink("one", folder_ / "current");
    fs::create_hard_link(folder_ / "current", folder_ / "saved"); // a second name, as backups make
    auto handle = files_->fileHandleForWriting(folder_ / "current/inner/a");
    ASSERT_TRUE(handle);
    EXPECT_TRUE(handle.value()->isInPlace());
    fs::create_directory_symlink("two", folder_ / "next");
    fs::rename(folder_ / "next", folder_ / "current");
    EXPECT_FALSE(handle.value()->isInPlace());
    fs::remove(folder_ / "current");
    fs::create_directory_symlink("one", folder_ / "current");
    EXPECT_TRUE(handle.value()->isInPlace());
    fs::remove(folder_ / "current");
    EXPECT_FALSE(handle.value()->isInPlace());
}

TEST_P(FileHandleContract, IsInPlaceWhateverHappensToAnotherNameOfTheFile) {
    EXPECT_TRUE(handle().isInPlace());
    std::filesystem::create_hard_link(folder_ / "a", folder_ / "b");
    EXPECT_TRUE(handle().isInPlace());
    ASSERT_TRUE(files_->removeItem(folder_ / "b"));
    EXPECT_TRUE(handle().isInPlace());
    std::filesystem::create_hard_link(folder_ / "a", folder_ / "b");
    ASSERT_TRUE(files_->removeItem(folder_ / "a"));
    EXPECT_FALSE(handle().isInPlace());
}

TEST_P(FileHandleContract, ReadsFromAnyOffsetAndStopsAtTheEnd) {
    std::array<char, 3> buffer{};
    EXPECT_EQ(handle().read(1, buffer).value(), 3U);
    EXPECT_EQ(std::string_view(buffer.data(), 3), "tar");
    EXPECT_EQ(handle().read(4, buffer).value(), 1U);
    EXPECT_EQ(buffer[0], 't');
    EXPECT_EQ(handle().read(5, buffer).value(), 0U);
    EXPECT_EQ(handle().read(1000, buffer).value(), 0U);
    EXPECT_EQ(handle().read(0, {}).value(), 0U);
}

TEST_P(FileHandleContract, ReadingDoesNotMoveWhereAppendsGo) {
    std::array<char, 3> buffer{};
    ASSERT_TRUE(handle().read(0, buffer));
    ASSERT_TRUE(handle().append("!"));
    EXPECT_EQ(text(), "start!");
}

TEST_P(FileHandleContract, TruncatesAndAppendsAtTheNewEnd) {
    EXPECT_TRUE(handle().truncate(2));
    EXPECT_EQ(handle().size().value(), 2U);
    EXPECT_TRUE(handle().append("op"));
    EXPECT_EQ(text(), "stop");
}

const Implementation<FileManager> posix{"Posix", [] { return std::make_shared<PosixFileManager>(); }};

INSTANTIATE_TEST_SUITE_P(All, FileManagerContract, ::testing::Values(posix), nameOfImplementation);
INSTANTIATE_TEST_SUITE_P(All, FileHandleContract, ::testing::Values(posix), nameOfImplementation);

} // namespace

} // namespace tallyfoot::testing
