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
    const auto run = runShell("TMPDIR=" + folder.path().string() + " " + tool() + " demo --quick --plain");
    EXPECT_EQ(run.status, 0) << text(run);
    EXPECT_NE(text(run).find("the same\n"), std::string::npos) << text(run);
    EXPECT_NE(text(run).find("crashes on purpose              1   \"SIGSEGV\"\n"), std::string::npos) << text(run);
    EXPECT_NE(text(run).find("told by the next start          1   once\n"), std::string::npos) << text(run);
    EXPECT_EQ(run.complaints, "");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path())); // it tidies up
}

TEST(Demo, KeepsItsFilesWhenAskedTo) {
    TemporaryFolder folder;
    const auto run =
        runShell("TMPDIR=" + folder.path().string() + " " + tool() + " demo --quick --keep --plain --threads 1");
    EXPECT_EQ(run.status, 0) << text(run);
    ASSERT_FALSE(std::filesystem::is_empty(folder.path()));
    const auto kept = std::filesystem::directory_iterator(folder.path())->path();
    const auto left = runTool({"cat", (kept / "data").string()});
    EXPECT_EQ(left.status, 0);
    EXPECT_EQ(left.lines.size(), 7U);
}

TEST(Demo, AccountsForEveryEventOfTheShortestSession) {
    TemporaryFolder folder;
    const auto run =
        runShell("TMPDIR=" + folder.path().string() + " " + tool() + " demo --events 1500 --plain --threads 16");
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

#ifdef TALLYFOOT_HAS_SHOP
// The walk through the shop, whose every kind of interaction must come out at what it must give.
class DemoShop : public ::testing::TestWithParam<int> {};

TEST_P(DemoShop, AccountsForEveryInteractionKindByKind) {
    TemporaryFolder folder;
    const auto run = runShell("TMPDIR=" + folder.path().string() + " " + tool() + " demo --quick --seed "
                              + std::to_string(GetParam()));
    EXPECT_EQ(run.status, 0) << text(run);
    EXPECT_NE(text(run).find("swipe actions"), std::string::npos) << text(run);
    EXPECT_EQ(text(run).find("NOT THE SAME"), std::string::npos) << text(run);
    EXPECT_NE(text(run).find("\"The basket \"Weekend\" fell over\"\n"), std::string::npos) << text(run);
    EXPECT_NE(text(run).find("told by the next start          1   once\n"), std::string::npos) << text(run);
    EXPECT_EQ(run.complaints, "");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

INSTANTIATE_TEST_SUITE_P(Seeds, DemoShop, ::testing::Values(1, 2, 3));

TEST(Demo, TakesThreadsForThePlainHostOnly) { EXPECT_EQ(runTool({"demo", "--threads", "2"}).status, 2); }
#endif

} // namespace
} // namespace tallyfoot::testing
