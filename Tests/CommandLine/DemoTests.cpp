#include "Support/TemporaryFolder.h"
#include "Support/ToolRun.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace tallyfoot::testing {
namespace {

std::string text(const ToolRun& run) {
    std::string all;
    for (const auto& line : run.lines) all += line + "\n";
    return all + run.complaints;
}

TEST(Demo, AccountsForEveryEventOfAQuickSession) {
    TemporaryFolder folder; // where the demo keeps its files
    const auto run = runShell("TMPDIR=" + folder.path().string() + " " + tool() + " demo --quick");
    EXPECT_EQ(run.status, 0) << text(run);
    EXPECT_NE(text(run).find("the same\n"), std::string::npos) << text(run);
    EXPECT_EQ(run.complaints, "");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path())); // it tidies up
}

TEST(Demo, KeepsItsFilesWhenAskedTo) {
    TemporaryFolder folder;
    const auto run = runShell("TMPDIR=" + folder.path().string() + " " + tool() + " demo --quick --keep --threads 1");
    EXPECT_EQ(run.status, 0) << text(run);
    ASSERT_FALSE(std::filesystem::is_empty(folder.path()));
    const auto kept = std::filesystem::directory_iterator(folder.path())->path();
    const auto left = runTool({"cat", (kept / "data").string()});
    EXPECT_EQ(left.status, 0);
    EXPECT_EQ(left.lines.size(), 7U);
}

TEST(Demo, AccountsForEveryEventOfTheShortestSession) {
    TemporaryFolder folder;
    const auto run = runShell("TMPDIR=" + folder.path().string() + " " + tool() + " demo --events 1500 --threads 16");
    EXPECT_EQ(run.status, 0) << text(run);
    EXPECT_EQ(runTool({"demo", "--events", "1499"}).status, 2);
}

TEST(Demo, NeedsNoStandardInput) {
    TemporaryFolder folder;
    const auto run = runShell("TMPDIR=" + folder.path().string() + " " + tool() + " demo --quick <&-");
    EXPECT_EQ(run.status, 0) << text(run);
}

TEST(Demo, FailsWithAMessageWhereItCannotWork) {
    const auto run = runShell("TMPDIR=/dev/null " + tool() + " demo --quick");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.complaints, "");
}

} // namespace
} // namespace tallyfoot::testing
