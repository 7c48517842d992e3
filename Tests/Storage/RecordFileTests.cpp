#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Platform/Posix/PosixFileManager.h"
#include "Tallyfoot/Storage/RecordFile.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace tallyfoot::testing {
namespace {

class RecordFileTest : public ::testing::Test {
protected:
    // What stands in the file once it was opened.
    std::string repaired(const std::string& bytes) {
        writeFile(path, bytes);
        EXPECT_TRUE(file.open(path));
        file.close();
        return readFile(path);
    }

    TemporaryFolder folder;
    PosixFileManager fileManager;
    RecordFile file{fileManager};
    std::string path = folder / "a.log";
};

TEST_F(RecordFileTest, RecordsFollowOneAnotherAndTheSizeIsTold) {
    writeFile(path, "");
    ASSERT_TRUE(file.open(path));
    ASSERT_TRUE(file.append("onejsonsplit"));
    EXPECT_EQ(file.size(), 12U);
    ASSERT_TRUE(file.append("twojsonsplit"));
    EXPECT_EQ(file.size(), 24U);
    EXPECT_EQ(readFile(path), "onejsonsplittwojsonsplit");
}

TEST_F(RecordFileTest, OpeningAgainGoesOnAtTheEnd) {
    writeFile(path, "onejsonsplit");
    ASSERT_TRUE(file.open(path));
    ASSERT_TRUE(file.append("twojsonsplit"));
    EXPECT_EQ(readFile(path), "onejsonsplittwojsonsplit");
}

TEST_F(RecordFileTest, AFileThatIsMissingIsNotMade) {
    EXPECT_FALSE(file.open(path));
    EXPECT_FALSE(file.isOpen());
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(RecordFileTest, ClosingEndsIt) {
    writeFile(path, "");
    ASSERT_TRUE(file.open(path));
    EXPECT_TRUE(file.isOpen());
    file.close();
    EXPECT_FALSE(file.isOpen());
}

TEST_F(RecordFileTest, AFileRemovedUnderneathIsTold) {
    writeFile(path, "");
    ASSERT_TRUE(file.open(path));
    EXPECT_TRUE(file.isInPlace());
    std::filesystem::remove(path);
    EXPECT_FALSE(file.isInPlace());
}

TEST_F(RecordFileTest, CountsItsSizeFromWhatStandsAfterTheRepair) {
    writeFile(path, "onejsonsplittw");
    ASSERT_TRUE(file.open(path));
    EXPECT_EQ(file.size(), 12U);
    ASSERT_TRUE(file.append("twojsonsplit"));
    EXPECT_EQ(file.size(), 24U);
}

TEST_F(RecordFileTest, AWholeFileStaysAsItIs) {
    for (const std::string bytes : {"", "jsonsplit", "onejsonsplit", "onejsonsplittwojsonsplit"}) {
        EXPECT_EQ(repaired(bytes), bytes);
    }
}

TEST_F(RecordFileTest, AFragmentIsCutOffAtTheLastSeparator) {
    EXPECT_EQ(repaired("onejsonsplittw"), "onejsonsplit");
    EXPECT_EQ(repaired("onejsonsplitt"), "onejsonsplit");
    EXPECT_EQ(repaired("onejsonsplittwojsonspli"), "onejsonsplit");
    EXPECT_EQ(repaired("onejsonsplittwojsonsplitj"), "onejsonsplittwojsonsplit");
    EXPECT_EQ(repaired("onejsonsplittwojsonsplit" + std::string(1, '\0')), "onejsonsplittwojsonsplit");
}

TEST_F(RecordFileTest, AFileWithoutASeparatorIsAllFragment) {
    EXPECT_EQ(repaired("x"), "");
    EXPECT_EQ(repaired("jsonspli"), "");
    EXPECT_EQ(repaired("{\"evtId\" : \"1"), "");
    EXPECT_EQ(repaired(std::string(100'000, 'x')), "");
}

TEST_F(RecordFileTest, TheSeparatorIsFoundWhereverBlocksMeet) {
    const std::string whole = "onejsonsplit";
    for (std::size_t length = 16384 - 24; length <= 16384 + 24; ++length) {
        EXPECT_EQ(repaired(whole + std::string(length, 'x')), whole) << length;
    }
    EXPECT_EQ(repaired(std::string(70'000, 'y') + whole + std::string(100'000, 'x')), std::string(70'000, 'y') + whole);
}

TEST_F(RecordFileTest, ARecordNeverFusesWithAFragment) {
    writeFile(path, "onejsonsplit{\"tor");
    ASSERT_TRUE(file.open(path));
    ASSERT_TRUE(file.append("twojsonsplit"));
    EXPECT_EQ(readFile(path), "onejsonsplittwojsonsplit");
}

} // namespace
} // namespace tallyfoot::testing
