#include "CommandLine/DemoDisk.h"
#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>

namespace tallyfoot::testing {
namespace {

namespace fs = std::filesystem;

TEST(DemoDisk, NamesFilesFromTheFolderOn) {
    TemporaryFolder folder;
    writeFile(folder.path() / "Shop/Events/a.log", R"({"evtId":"1"}jsonsplit)");
    const auto disk = commandline::DemoDisk::read(folder.path());
    ASSERT_EQ(disk.files.size(), 1U);
    EXPECT_EQ(disk.files[0].path, "Shop/Events/a.log");
    EXPECT_EQ(disk.files[0].records, 1U);
    EXPECT_EQ(disk.open, 1U);
}

// The progress line looks while the host is at work.
TEST(DemoDisk, IsReadWhileFilesMove) {
    TemporaryFolder folder;
    const auto open = folder.path() / "Events/a.log";
    const auto closed = folder.path() / "Upload/a.log";
    writeFile(open, R"({"evtId":"1"}jsonsplit)");
    fs::create_directories(closed.parent_path());
    std::atomic<bool> isOver = false;
    std::thread mover([&] {
        while (!isOver) {
            fs::rename(open, closed);
            fs::rename(closed, open);
        }
    });
    for (int look = 0; look < 1000; ++look) EXPECT_NO_THROW(commandline::DemoDisk::read(folder.path()));
    isOver = true;
    mover.join();
}

} // namespace
} // namespace tallyfoot::testing
