#include "RelayFileManager.h"
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

// A disk whose files cannot be cut, and that takes nothing more once it is full.
class Uncuttable final : public RelayFileManager {
public:
    using RelayFileManager::RelayFileManager;
    Result<std::unique_ptr<FileHandle>> fileHandleForWriting(const std::string& path) override {
        auto handle = RelayFileManager::fileHandleForWriting(path);
        if (!handle) return handle;
        return std::unique_ptr<FileHandle>(std::make_unique<Handle>(std::move(handle.value()), isFull));
    }
    bool isFull = false;

private:
    class Handle final : public FileHandle {
    public:
        Handle(std::unique_ptr<FileHandle> next, const bool& isFull) : next_(std::move(next)), isFull_(isFull) {}
        Result<void> append(std::string_view bytes) override {
            return isFull_ ? Result<void>(Error{"full"}) : next_->append(bytes);
        }
        Result<std::uint64_t> size() const override { return next_->size(); }
        bool isInPlace() override { return next_->isInPlace(); }
        Result<std::size_t> read(std::uint64_t offset, std::span<char> buffer) const override {
            return next_->read(offset, buffer);
        }
        Result<void> truncate(std::uint64_t) override { return Error{"stuck"}; }
        bool lock() override { return next_->lock(); }

    private:
        std::unique_ptr<FileHandle> next_;
        const bool& isFull_;
    };
};

TEST_F(RecordFileTest, AFragmentThatCannotBeCutOffIsKeptApart) {
    writeFile(path, "onejsonsplit{\"tor");
    Uncuttable disk(fileManager);
    RecordFile odd(disk);
    ASSERT_TRUE(odd.open(path));
    ASSERT_TRUE(odd.append("twojsonsplit"));
    EXPECT_EQ(readFile(path), "onejsonsplit{\"torjsonsplittwojsonsplit");
    EXPECT_EQ(odd.size(), readFile(path).size());
}

TEST_F(RecordFileTest, AFileWhoseFragmentCannotBeKeptApartIsNotOpened) {
    writeFile(path, "onejsonsplit{\"tor");
    Uncuttable disk(fileManager);
    disk.isFull = true;
    RecordFile odd(disk);
    EXPECT_FALSE(odd.open(path));
    EXPECT_FALSE(odd.isOpen());
    EXPECT_EQ(readFile(path), "onejsonsplit{\"tor");
}

} // namespace
} // namespace tallyfoot::testing
