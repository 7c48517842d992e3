#include "Collector/TestUpload.h"
#include "CommandLine/RecordWalk.h"
#include "Support/OrdinaryUser.h"
#include "Support/TemporaryFolder.h"
#include "Support/ToolRun.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyfoot::testing {
namespace {

using List = std::vector<std::string>;

const std::string one = "{\n  \"evtId\" : \"1\",\n  \"evtType\" : \"action\"\n}";
const std::string oneCompact = R"({"evtId":"1","evtType":"action"})";
const std::string two = R"({"evtId":"2","custom":[{"n":1.50,"big":12345678901234567890123}]})";

TEST(Cat, PrintsOneCompactRecordALine) {
    TemporaryFolder folder;
    writeFile(folder / "a.log", log({one, two}));
    const auto run = runTool({"cat", folder / "a.log"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.lines, (List{oneCompact, two}));
    EXPECT_EQ(run.complaints, "");
}

TEST(Cat, KeepsWhiteSpaceInsideOfValues) {
    TemporaryFolder folder;
    writeFile(folder / "a.log", log({"{\n  \"pgName\" : \"a  b \\\" \\n : c\"\n}"}));
    EXPECT_EQ(runTool({"cat", folder / "a.log"}).lines, List{R"({"pgName":"a  b \" \n : c"})"});
}

TEST(Cat, AValueThatHoldsTheSeparatorStaysInOneRecord) {
    TemporaryFolder folder;
    writeFile(folder / "a.log", log({R"({"a":"x jsonsplit{"})", R"({"b":"jsonsplit"})"}));
    EXPECT_EQ(runTool({"cat", folder / "a.log"}).lines, (List{R"({"a":"x jsonsplit{"})", R"({"b":"jsonsplit"})"}));
}

TEST(Cat, ATornTailIsToldAndIsNoFailure) {
    TemporaryFolder folder;
    writeFile(folder / "a.log", log({two}) + "{\"evtId");
    const auto run = runTool({"cat", folder / "a.log"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.lines, List{two});
    EXPECT_EQ(run.complaints, "tallyfoot: " + (folder / "a.log") + ": ends in an unfinished record: 7 bytes at offset "
                                  + std::to_string(two.size() + 9) + "\n");
}

TEST(Cat, WhatIsNoRecordIsToldAndFailsAfterTheRestWasPrinted) {
    TemporaryFolder folder;
    writeFile(folder / "a.log", log({"nonsense", two}));
    const auto run = runTool({"cat", folder / "a.log"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.lines, List{two});
    EXPECT_NE(run.complaints.find("no record: 8 bytes at offset 0"), std::string::npos) << run.complaints;
}

TEST(Cat, ReadsTheEntriesOfAnArchive) {
    TemporaryFolder folder;
    writeFile(folder / "a.zip", archive({{"a.log", log({one})}, {"b.log", log({two}) + "{"}}));
    const auto run = runTool({"cat", folder / "a.zip"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.lines, (List{oneCompact, two}));
    EXPECT_NE(run.complaints.find("a.zip: b.log: ends in an unfinished record: 1 bytes"), std::string::npos);
}

TEST(Cat, AnArchiveWithAWrongChecksumFailsAndItsOtherEntriesArePrinted) {
    TemporaryFolder folder;
    auto bytes = archive({{"a.log", log({R"({"x":"marked"})"})}, {"b.log", log({two})}});
    bytes.replace(bytes.find("marked"), 6, "Marked");
    writeFile(folder / "a.zip", bytes);
    const auto run = runTool({"cat", folder / "a.zip"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.lines, List{two});
}

TEST(Cat, ReadsAllLogsAndArchivesBelowAFolderInOrder) {
    TemporaryFolder folder;
    writeFile(folder / "Shop/Upload/b.log", log({R"({"n":3})"}));
    writeFile(folder / "Shop/Backup/a.zip", archive({{"a.log", log({R"({"n":1})"})}}));
    writeFile(folder / "Shop/Events/a.log", log({R"({"n":2})"}));
    writeFile(folder / "Shop/Events/.hidden.log", log({R"({"n":9})"}));
    writeFile(folder / "Shop/Events/note.txt", "nothing");
    const auto run = runTool({"cat", folder.path().string()});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.lines, (List{R"({"n":1})", R"({"n":2})", R"({"n":3})"}));
    EXPECT_EQ(run.complaints, "");
}

TEST(Cat, AnEmptyLogAndAnEmptyFolderPrintNothing) {
    TemporaryFolder folder;
    writeFile(folder / "a.log", "");
    EXPECT_EQ(runTool({"cat", folder / "a.log"}).lines, List{});
    EXPECT_EQ(runTool({"cat", folder.path().string()}).status, 0);
}

TEST(Cat, WhatIsNotThereFailsWithAMessage) {
    TemporaryFolder folder;
    const auto run = runTool({"cat", folder / "none.log"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.complaints, "tallyfoot: " + (folder / "none.log") + ": No such file or directory\n");
}

TEST(Cat, ADanglingLinkFailsWithAMessage) {
    TemporaryFolder folder;
    std::filesystem::create_symlink(folder / "nowhere", folder.path() / "a.log");
    EXPECT_EQ(runTool({"cat", folder.path().string()}).status, 1);
}

TEST(Cat, APipeInAFolderIsNotWaitedFor) {
    TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "a.log").c_str(), 0600), 0);
    writeFile(folder / "b.log", log({two}));
    const auto run = runTool({"cat", folder.path().string()});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.lines, List{two});
}

TEST(Cat, AFolderThatMayNotBeReadHidesNoOther) {
    TemporaryFolder folder;
    for (const std::string name : {"a", "b", "c"}) {
        std::filesystem::create_directory(folder.path() / name);
        writeFile(folder / name + "/1.log", log({two}));
    }
    std::filesystem::permissions(folder.path() / "b", std::filesystem::perms::none);
    std::vector<std::string> records;
    std::vector<std::string> unreadable;
    commandline::RecordVisitor visitor;
    visitor.record = [&](const std::string& file, std::string_view) { records.push_back(file); };
    visitor.unreadable = [&](const std::string& path, const std::string&) { unreadable.push_back(path); };
    EXPECT_TRUE(asOrdinaryUser(folder, [&] {
        commandline::walkRecords(folder.path(), visitor);
        return records == List{folder / "a/1.log", folder / "c/1.log"} && unreadable == List{folder / "b"};
    }));
    std::filesystem::permissions(folder.path() / "b", std::filesystem::perms::owner_all);
}

TEST(Cat, AnEntrysNameDoesNotSpeakToTheTerminal) {
    TemporaryFolder folder;
    auto bytes = archive({{"a[2Jb.log", "no record"}});
    for (std::size_t at = 0; (at = bytes.find("a[2Jb.log", at)) != std::string::npos;)
        bytes.replace(at, 5, "\x1B[2J\n");
    writeFile(folder / "a.zip", bytes);
    const auto run = runTool({"cat", folder / "a.zip"});
    EXPECT_EQ(run.complaints,
              "tallyfoot: " + (folder / "a.zip") + ": ?[2J?.log: ends in an unfinished record: 9 bytes at offset 0\n");
}

TEST(Cat, WhatIsNoArchiveFailsWithAMessage) {
    TemporaryFolder folder;
    writeFile(folder / "a.zip", "no archive");
    const auto run = runTool({"cat", folder / "a.zip"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.complaints.find("no readable archive"), std::string::npos);
}

TEST(Cat, AReaderThatLeavesIsNoFailure) {
    TemporaryFolder folder;
    std::vector<std::string> records(20000, two); // much more than a pipe holds
    writeFile(folder / "a.log", log(records));
    const auto run = runShell(tool() + " cat " + (folder / "a.log") + " | head -n 1; exit ${PIPESTATUS[0]}");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.lines, List{two});
    EXPECT_EQ(run.complaints, "");
}

TEST(Cat, AFullDiskIsAFailure) {
    TemporaryFolder folder;
    writeFile(folder / "a.log", log({two}));
    const auto run = runShell(tool() + " cat " + (folder / "a.log") + " > /dev/full");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.complaints.find("No space left"), std::string::npos);
}

TEST(Cat, AClosedStandardOutputIsAFailure) {
    TemporaryFolder folder;
    writeFile(folder / "a.log", log({two}));
    const auto run = runShell(tool() + " cat " + (folder / "a.log") + " >&-");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.complaints, "tallyfoot: standard output: Bad file descriptor\n");
}

TEST(Tool, NeedsASubcommand) { EXPECT_EQ(runTool({}).status, 2); }

TEST(Tool, TellsWhatItCanDo) {
    const auto run = runTool({"--help"});
    EXPECT_EQ(run.status, 0);
    EXPECT_FALSE(run.lines.empty());
}

TEST(Tool, RefusesAFaultItDoesNotKnow) { EXPECT_EQ(runTool({"collect", "--fault", "fire"}).status, 2); }

} // namespace
} // namespace tallyfoot::testing
