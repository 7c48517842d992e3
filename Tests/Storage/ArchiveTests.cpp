#include "StorageFixture.h"

#include "Tallyfoot/Storage/Archive.h"
#include "Tallyfoot/Storage/ArchiveSink.h"

#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zip.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace tallyfoot::testing {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace fs = std::filesystem;

struct EntryFacts {
    std::string name;
    std::string text;
    unsigned method;
    unsigned flags; // general purpose bits
    unsigned extraLength;
    std::uint64_t size;
};

unsigned number(std::string_view bytes, std::size_t at, std::size_t length) {
    unsigned value = 0;
    for (std::size_t index = length; index > 0; --index) {
        value = value << 8U | static_cast<unsigned char>(bytes[at + index - 1]);
    }
    return value;
}

// Reads the local file headers one after another, as a reader without the library would; only stored
// entries without a data descriptor can be read so.
std::vector<EntryFacts> localEntries(const std::string& bytes) {
    std::vector<EntryFacts> entries;
    std::size_t at = 0;
    while (bytes.compare(at, 4, "PK\3\4") == 0) {
        EntryFacts entry;
        entry.flags = number(bytes, at + 6, 2);
        entry.method = number(bytes, at + 8, 2);
        entry.size = number(bytes, at + 22, 4);
        const auto nameLength = number(bytes, at + 26, 2);
        entry.extraLength = number(bytes, at + 28, 2);
        entry.name = bytes.substr(at + 30, nameLength);
        entry.text = bytes.substr(at + 30 + nameLength + entry.extraLength, entry.size);
        EXPECT_EQ(number(bytes, at + 18, 4), entry.size); // compressed and not: the same
        at += 30 + nameLength + entry.extraLength + entry.size;
        entries.push_back(std::move(entry));
    }
    EXPECT_EQ(bytes.compare(at, 4, "PK\1\2"), 0) << "the central directory does not follow the last entry";
    return entries;
}

bool hasCommand(const std::string& command) {
    return std::system(("command -v " + command + " >/dev/null 2>&1").c_str()) == 0;
}

class ArchiveTest : public ::testing::Test {
protected:
    std::vector<std::string> makeLogs(const std::vector<std::string>& texts) {
        std::vector<std::string> paths;
        for (std::size_t index = 0; index < texts.size(); ++index) {
            paths.push_back(folder / ("Upload/" + std::to_string(index) + ".log"));
            writeFile(paths.back(), texts[index]);
        }
        return paths;
    }
    Result<std::vector<std::string>> unpack() {
        fs::create_directories(target);
        return Archive::unpack(fileManager, archive, target + "/");
    }
    std::string failure() {
        const auto names = unpack();
        return names ? "none" : names.error().description;
    }

    TemporaryFolder folder;
    PosixFileManager fileManager;
    std::string archive = folder / "a.zip";
    std::string target = folder / "target";
};

TEST_F(ArchiveTest, OneFileIsOneStoredEntryUnderItsBareName) {
    ASSERT_TRUE(Archive::pack(makeLogs({"onejsonsplit"}), archive));
    const auto entries = localEntries(readFile(archive));
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].name, "0.log");
    EXPECT_EQ(entries[0].method, 0U);
    EXPECT_EQ(entries[0].flags, 0U);
    EXPECT_EQ(entries[0].text, "onejsonsplit");
}

TEST_F(ArchiveTest, ThreeFilesAreStoredEntriesInListOrder) {
    auto paths = makeLogs({"a", "bb", std::string(300'000, 'c')});
    std::reverse(paths.begin(), paths.end());
    ASSERT_TRUE(Archive::pack(paths, archive));
    const auto entries = localEntries(readFile(archive));
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].name, "2.log");
    EXPECT_EQ(entries[1].name, "1.log");
    EXPECT_EQ(entries[2].name, "0.log");
    for (const auto& entry : entries) {
        EXPECT_EQ(entry.method, 0U);
        EXPECT_EQ(entry.flags, 0U);
    }
    EXPECT_EQ(entries[0].text, std::string(300'000, 'c'));
    EXPECT_EQ(entries[1].text, "bb");
    EXPECT_EQ(entries[2].text, "a");
}

TEST_F(ArchiveTest, NothingElseIsLeftBesideTheArchive) {
    ASSERT_TRUE(Archive::pack(makeLogs({"a", "b"}), archive));
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.path())) names.push_back(entry.path().filename());
    EXPECT_THAT(names, ::testing::UnorderedElementsAre("Upload", "a.zip"));
}

TEST_F(ArchiveTest, NoFilesMakeNoArchive) {
    EXPECT_TRUE(Archive::pack({}, archive));
    EXPECT_FALSE(fs::exists(archive));
}

TEST_F(ArchiveTest, AnArchiveThatExistsIsNotOverwritten) {
    writeFile(archive, "taken");
    EXPECT_FALSE(Archive::pack(makeLogs({"a"}), archive));
    EXPECT_EQ(readFile(archive), "taken");
}

TEST_F(ArchiveTest, AnArchiveIsForTheUserAlone) {
    ASSERT_TRUE(Archive::pack(makeLogs({"a"}), archive));
    EXPECT_EQ(fs::status(archive).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(ArchiveTest, AMissingFileFailsThePackingAndLeavesNothing) {
    auto paths = makeLogs({"a", "b"});
    fs::remove(paths[1]);
    const auto packed = Archive::pack(paths, archive);
    ASSERT_FALSE(packed);
    EXPECT_FALSE(packed.error().description.empty());
    EXPECT_FALSE(fs::exists(archive));
}

TEST_F(ArchiveTest, AFolderThatIsMissingFailsThePacking) {
    EXPECT_FALSE(Archive::pack(makeLogs({"a"}), folder / "none/a.zip"));
}

TEST_F(ArchiveTest, WhatWasPackedComesBackByteForByte) {
    std::string binary;
    for (int byte = 0; byte < 256; ++byte) binary += static_cast<char>(byte);
    const std::vector<std::string> texts{"onejsonsplittwojsonsplit", binary, std::string(1'000'000, 'x'), "ä\n\r\n"};
    ASSERT_TRUE(Archive::pack(makeLogs(texts), archive));
    const auto names = unpack();
    ASSERT_TRUE(names);
    EXPECT_THAT(names.value(), ElementsAre("0.log", "1.log", "2.log", "3.log"));
    for (std::size_t index = 0; index < texts.size(); ++index) {
        EXPECT_EQ(readFile(target + "/" + std::to_string(index) + ".log"), texts[index]);
    }
}

TEST_F(ArchiveTest, ManyFilesFitIntoOneArchive) {
    std::vector<std::string> texts;
    for (int index = 0; index < 1500; ++index) texts.push_back(std::to_string(index));
    ASSERT_TRUE(Archive::pack(makeLogs(texts), archive));
    EXPECT_EQ(unpack().value().size(), 1500U);
    EXPECT_EQ(readFile(target + "/1499.log"), "1499");
}

TEST_F(ArchiveTest, UnzipFindsNoFault) {
    if (!hasCommand("unzip")) GTEST_SKIP() << "unzip is not installed";
    ASSERT_TRUE(Archive::pack(makeLogs({"onejsonsplit", std::string(70'000, 'x')}), archive));
    EXPECT_EQ(std::system(("unzip -tqq '" + archive + "'").c_str()), 0);
}

TEST_F(ArchiveTest, PythonReadsTheSameBytes) {
    if (!hasCommand("python3")) GTEST_SKIP() << "python3 is not installed";
    ASSERT_TRUE(Archive::pack(makeLogs({"onejsonsplit", std::string(70'000, 'x')}), archive));
    const auto script = folder / "check.py";
    writeFile(script, "import sys, zipfile\n"
                      "z = zipfile.ZipFile(sys.argv[1])\n"
                      "assert z.testzip() is None\n"
                      "assert z.namelist() == ['0.log', '1.log'], z.namelist()\n"
                      "assert all(i.compress_type == zipfile.ZIP_STORED for i in z.infolist())\n"
                      "assert z.read('0.log') == b'onejsonsplit'\n"
                      "assert z.read('1.log') == b'x' * 70000\n");
    EXPECT_EQ(std::system(("python3 '" + script + "' '" + archive + "'").c_str()), 0);
}

TEST_F(ArchiveTest, DeflatedEntriesAreReadToo) {
    writeArchive(archive, {{"a.log", std::string(20'000, 'x') + "end"}}, true);
    ASSERT_LT(fs::file_size(archive), 1000U);
    ASSERT_TRUE(unpack());
    EXPECT_EQ(readFile(target + "/a.log"), std::string(20'000, 'x') + "end");
}

TEST_F(ArchiveTest, AnEmptyEntryIsAnEmptyFile) {
    writeArchive(archive, {{"a.log", ""}, {"b.log", "1"}});
    ASSERT_TRUE(unpack());
    EXPECT_EQ(readFile(target + "/a.log"), "");
    EXPECT_EQ(readFile(target + "/b.log"), "1");
}

TEST_F(ArchiveTest, AFlippedByteFailsTheChecksum) {
    writeArchive(archive, {{"a.log", "onejsonsplit"}});
    replaceInFile(archive, "onejson", "0nejson");
    EXPECT_NE(failure(), "none");
}

TEST_F(ArchiveTest, AFlippedByteFarFromTheStartFailsTheChecksum) {
    writeArchive(archive, {{"a.log", std::string(200'000, 'x') + "Q" + std::string(99'999, 'x')}});
    replaceInFile(archive, "Q", "q");
    EXPECT_NE(failure(), "none");
}

TEST_F(ArchiveTest, WhatIsNoArchiveFails) {
    for (const auto& text : {""s, "x"s, "PK\3\4"s, std::string(100'000, '\0')}) {
        writeFile(archive, text);
        EXPECT_NE(failure(), "none") << text.size();
    }
    fs::remove(archive);
    EXPECT_NE(failure(), "none");
    fs::create_directories(archive);
    EXPECT_NE(failure(), "none");
}

TEST_F(ArchiveTest, ATruncatedArchiveFailsWhereverItIsCut) {
    writeArchive(archive, {{"a.log", "onejsonsplit"}, {"b.log", "twojsonsplit"}});
    const auto whole = readFile(archive);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        writeFile(archive, whole.substr(0, length));
        EXPECT_NE(failure(), "none") << length;
    }
}

TEST_F(ArchiveTest, AChangedByteAnywhereNeverEscapesOrCrashes) {
    writeArchive(archive, {{"a.log", "onejsonsplit"}, {"b.log", "twojsonsplit"}});
    const auto whole = readFile(archive);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '\xFF', '/', '.'}) {
            auto changed = whole;
            changed[at] = byte;
            writeFile(archive, changed);
            (void)unpack();
        }
    }
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.path())) names.push_back(entry.path().filename());
    EXPECT_THAT(names, ::testing::UnorderedElementsAre("target", "a.zip"));
}

TEST_F(ArchiveTest, AnEntryThatIsNoPlainFileNameFailsTheWhole) {
    for (const auto& name :
         {".."s, "."s, ".hidden"s, "../x.log"s, "/x.log"s, "sub/x.log"s, "sub/"s, "a\\x.log"s, "..\\x.log"s}) {
        fs::remove(archive);
        fs::remove_all(target);
        writeArchive(archive, {{"good.log", "1"}, {name, "2"}});
        EXPECT_THAT(failure(), HasSubstr("file name")) << name;
        EXPECT_TRUE(fs::is_empty(target)) << name;
    }
    EXPECT_FALSE(fs::exists(folder / "x.log"));
}

TEST_F(ArchiveTest, AnEntryWithoutANameFailsTheWhole) {
    // A name of no bytes, in the directory's record: the length is zero and the bytes become the comment.
    writeArchive(archive, {{"a.log", "1"}});
    auto changed = readFile(archive);
    const auto record = changed.find("PK\1\2");
    ASSERT_NE(record, changed.npos);
    changed[record + 28] = 0;
    changed[record + 32] = 5;
    writeFile(archive, changed);
    EXPECT_NE(failure(), "none");
    EXPECT_TRUE(fs::is_empty(target));
}

TEST_F(ArchiveTest, TwoEntriesOfOneNameFailTheWhole) {
    writeArchive(archive, {{"a.log", "1"}, {"b.log", "2"}});
    replaceInFile(archive, "b.log", "a.log");
    EXPECT_THAT(failure(), HasSubstr("one name"));
    EXPECT_TRUE(fs::is_empty(target));
}

TEST_F(ArchiveTest, AnEntryThatSwellsBeyondBeliefIsNotExtracted) {
    writeArchive(archive, {{"a.log", std::string(20U << 20U, '\0')}}, true);
    EXPECT_THAT(failure(), HasSubstr("too large"));
    EXPECT_TRUE(fs::is_empty(target));
}

TEST_F(ArchiveTest, AnEntryThatIsLargerThanItSaysFails) {
    const std::string text(50'000, 'x');
    writeArchive(archive, {{"a.log", text}}, true);
    replaceInFile(archive, "\x50\xC3\0\0"s, "\x10\0\0\0"s); // 50,000 in both headers
    EXPECT_NE(failure(), "none");
}

TEST_F(ArchiveTest, AnEncryptedEntryFails) {
    zip_t* zip = zip_open(archive.c_str(), ZIP_CREATE, nullptr);
    const std::string text = "onejsonsplit";
    const auto index = zip_file_add(zip, "a.log", zip_source_buffer(zip, text.data(), text.size(), 0), 0);
    ASSERT_GE(index, 0);
    if (zip_file_set_encryption(zip, static_cast<zip_uint64_t>(index), ZIP_EM_TRAD_PKWARE, "secret") != 0) {
        zip_discard(zip);
        GTEST_SKIP() << "this library does not encrypt";
    }
    ASSERT_EQ(zip_close(zip), 0);
    EXPECT_NE(failure(), "none");
}

TEST_F(ArchiveTest, ATargetThatCannotBeWrittenFails) {
    writeArchive(archive, {{"a.log", "1"}});
    EXPECT_FALSE(Archive::unpack(fileManager, archive, folder / "none/"));
}

TEST_F(ArchiveTest, WhatGoesToAClosedStandardOutputIsInNoArchive) {
    const auto paths = makeLogs(std::vector<std::string>(100, std::string(20'000, 'a')));
    EXPECT_EXIT(
        {
            ::close(STDOUT_FILENO);
            std::atomic<bool> isDone = false;
            std::thread writer([&] {
                // Past ThreadSanitizer: that the number is another file's meanwhile is what is tried.
                while (!isDone) (void)::syscall(SYS_write, STDOUT_FILENO, "trace", 5);
            });
            const bool isPacked = bool(Archive::pack(paths, archive));
            isDone = true;
            writer.join();
            std::_Exit(isPacked ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
    EXPECT_EQ(readFile(archive).find("trace"), std::string::npos);
    EXPECT_EQ(unpack().value().size(), 100U);
}

// libzip's way to a file draws random bytes from a library that is torn down by an exit handler.
// It has the open file, and whatever waits to be written, as its parent has.
TEST_F(ArchiveTest, AForkedChildThatExitsAddsNothingToAnArchive) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* sink = makeArchiveSink(archive, error);
    ASSERT_NE(sink, nullptr);
    ASSERT_EQ(zip_source_begin_write(sink), 0);
    ASSERT_EQ(zip_source_write(sink, "once", 4), 4);
    const auto child = ::fork();
    if (child == 0) std::exit(0);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    ASSERT_EQ(zip_source_commit_write(sink), 0);
    zip_source_free(sink);
    EXPECT_EQ(readFile(archive), "once");
}

TEST_F(ArchiveTest, PackingGoesOnWhileTheProcessEnds) {
    static const auto paths = makeLogs({"a"});
    static const std::string last = archive;
    EXPECT_EXIT(
        {
            std::atexit([] {
                if (!Archive::pack(paths, last)) std::_Exit(1);
            });
            zip_t* zip = zip_open((folder / "b.zip").c_str(), ZIP_CREATE, nullptr);
            zip_file_add(zip, "b", zip_source_buffer(zip, "b", 1, 0), 0);
            if (zip_close(zip) != 0) std::_Exit(2);
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
    EXPECT_EQ(localEntries(readFile(archive)).size(), 1U);
}

} // namespace
} // namespace tallyfoot::testing
