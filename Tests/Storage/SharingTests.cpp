#include "RelayFileManager.h"
#include "StorageFixture.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <utility>
#include <vector>

namespace tallyfoot::testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace fs = std::filesystem;

constexpr auto ownName = "07-03-2024T14-05-09-123.log";

// Another process that has done something and goes on living.
class Neighbour {
public:
    explicit Neighbour(const std::function<void()>& work) {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        child_ = ::fork();
        if (child_ == 0) {
            work();
            (void)!::write(ends[1], "", 1);
            for (;;) ::pause();
        }
        ::close(ends[1]);
        char done = 0;
        EXPECT_EQ(::read(ends[0], &done, 1), 1);
        ::close(ends[0]);
    }

    ~Neighbour() { kill(); }

    Neighbour(const Neighbour&) = delete;
    Neighbour& operator=(const Neighbour&) = delete;

    void kill() {
        if (child_ > 0) {
            ::kill(child_, SIGKILL);
            EXPECT_EQ(::waitpid(child_, nullptr, 0), child_);
        }
        child_ = 0;
    }

private:
    pid_t child_ = 0;
};

class SharingTest : public StorageFixture {
protected:
    // As the one process has it, and as long as that lives.
    std::function<void()> writing(const std::string& record) {
        return [this, record] {
            kept_ = makeFileHandler();
            kept_->write(record);
        };
    }

    std::unique_ptr<FileHandler> kept_;
};

TEST_F(SharingTest, AFileThatAnotherProcessWritesToIsNeitherChosenNorClosed) {
    const Neighbour neighbour(writing("theirsjsonsplit"));
    const auto handler = makeFileHandler();
    EXPECT_NE(handler->currentLogFileName(), ownName);
    handler->write("oursjsonsplit");
    const auto name = *handler->currentLogFileName();
    handler->close();
    EXPECT_EQ(bytes(Folder::events, ownName), "theirsjsonsplit");
    EXPECT_THAT(names(Folder::upload), ElementsAre(name));
    EXPECT_EQ(bytes(Folder::upload, name), "oursjsonsplit");
}

TEST_F(SharingTest, AFileThatAnotherProcessTookAfterItWasChosenIsLeftToIt) {
    const auto handler = makeFileHandler();
    EXPECT_EQ(handler->currentLogFileName(), ownName);
    const Neighbour neighbour(writing("theirsjsonsplit"));
    handler->write("oursjsonsplit");
    EXPECT_NE(handler->currentLogFileName(), ownName);
    EXPECT_EQ(bytes(Folder::events, ownName), "theirsjsonsplit");
    EXPECT_EQ(bytes(Folder::events, *handler->currentLogFileName()), "oursjsonsplit");
}

TEST_F(SharingTest, AFileThatAnotherProcessTookAndThatWasNeverWrittenToHereIsNotMoved) {
    const auto handler = makeFileHandler();
    const Neighbour neighbour(writing("theirsjsonsplit"));
    handler->close();
    EXPECT_THAT(names(Folder::events), ElementsAre(ownName));
    EXPECT_THAT(names(Folder::upload), IsEmpty());
}

TEST_F(SharingTest, WhatADeadProcessWroteIsClosedByTheNextOne) {
    Neighbour neighbour(writing("theirsjsonsplit"));
    const auto handler = makeFileHandler();
    neighbour.kill();
    handler->close();
    EXPECT_EQ(bytes(Folder::upload, ownName), "theirsjsonsplit");
}

// On its disk others do something in the middle of one call.
class BusyDisk final : public RelayFileManager {
public:
    using RelayFileManager::RelayFileManager;

    bool fileExists(const std::string& path) const override {
        const bool exists = RelayFileManager::fileExists(path);
        if (path == watched) run(afterLook);
        return exists;
    }
    Result<void> writeAtomically(const std::string& path, std::string_view bytes) override {
        if (path == watched) run(beforeMaking);
        return RelayFileManager::writeAtomically(path, bytes);
    }
    Result<std::unique_ptr<FileHandle>> fileHandleForWriting(const std::string& path) override {
        if (path == watched) run(beforeOpening);
        auto handle = RelayFileManager::fileHandleForWriting(path);
        if (path == watched) run(afterOpening);
        return handle;
    }

    Result<void> moveItem(const std::string& source, const std::string& destination) override {
        if (beforeMovingTo) beforeMovingTo(destination);
        return RelayFileManager::moveItem(source, destination);
    }

    std::string watched;
    std::function<void(const std::string&)> beforeMovingTo;
    mutable std::function<void()> afterLook;
    std::function<void()> beforeMaking;
    std::function<void()> beforeOpening;
    std::function<void()> afterOpening;

private:
    static void run(std::function<void()>& once) {
        if (const auto work = std::exchange(once, {})) work();
    }
};

class BusySharingTest : public SharingTest {
protected:
    BusySharingTest() {
        handler->close();
        name = *handler->currentLogFileName();
        disk.watched = path(Folder::events, name);
    }

    void closeTheirs() { EXPECT_TRUE(makeAppFolder()->move(name, Folder::events, Folder::upload)); }

    void expectOursIsWritten() {
        console.clear();
        handler->write("oursjsonsplit");
        EXPECT_EQ(bytes(Folder::events, *handler->currentLogFileName()), "oursjsonsplit");
        EXPECT_THAT(console.lines(), Each(StartsWith("\"File created at path: ")));
        EXPECT_EQ(bytes(Folder::upload, name), "theirsjsonsplit");
    }

    BusyDisk disk{fileManager};
    std::unique_ptr<FileHandler> handler = makeFileHandler(disk);
    std::string name; // of the file that the next record makes
};

TEST_F(BusySharingTest, AFileThatAnotherProcessMadeFirstAndClosedAtOnceCostsNoRecord) {
    disk.beforeMaking = [this] {
        put(Folder::events, name, "theirsjsonsplit");
        disk.afterLook = [this] { closeTheirs(); };
    };
    expectOursIsWritten();
}

TEST_F(BusySharingTest, AFileThatAThirdProcessMadeAfterTheOtherClosedItsOwnCostsNoRecord) {
    disk.beforeOpening = [this] {
        put(Folder::events, name, "theirsjsonsplit");
        closeTheirs();
        disk.afterOpening = [this] { put(Folder::events, name, ""); };
    };
    expectOursIsWritten();
}

TEST_F(BusySharingTest, AFileThatAThirdProcessMadeWhereALeftoverWasIsNotMoved) {
    put(Folder::events, name, "theirsjsonsplit");
    disk.afterOpening = [this] {
        closeTheirs();
        put(Folder::events, name, "beingwrittenjsonsplit");
    };
    const auto other = makeFileHandler(disk, false);
    EXPECT_EQ(bytes(Folder::events, name), "beingwrittenjsonsplit");
    EXPECT_EQ(bytes(Folder::upload, name), "theirsjsonsplit");
}

// Another process that had the name in mind for its next record.
bool couldBeWrittenTo(const std::string& path) {
    const auto child = ::fork();
    if (child == 0) {
        PosixFileManager theirs;
        if (!theirs.fileExists(path)) (void)theirs.writeAtomically(path, {});
        auto handle = theirs.fileHandleForWriting(path);
        ::_exit(handle && handle.value()->lock() ? 1 : 0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return status != 0;
}

TEST_F(BusySharingTest, NobodyBeginsToWriteUnderTheNameThatAFileIsRestoredUnder) {
    put(Folder::upload, "a.log", "closed");
    const auto archive = putArchive("a.zip", {{"a.log", "1"}, {"b.log", "2"}});
    std::vector<bool> openings;
    disk.beforeMovingTo = [&](const std::string& destination) {
        if (destination.starts_with(path(Folder::upload)))
            openings.push_back(couldBeWrittenTo(path(Folder::events, fs::path(destination).filename())));
    };
    const auto before = names(Folder::events);
    handler->restore(archive, {}, directly);
    EXPECT_THAT(openings, ElementsAre(false, false));
    EXPECT_EQ(names(Folder::events), before);
}

TEST_F(BusySharingTest, NobodyBeginsToWriteUnderTheNewNameThatALeftoverGets) {
    put(Folder::events, "a.log", "theirsjsonsplit");
    put(Folder::upload, "a.log", "closed");
    std::vector<bool> openings;
    disk.beforeMovingTo = [&](const std::string& destination) {
        if (destination.starts_with(path(Folder::upload)))
            openings.push_back(couldBeWrittenTo(path(Folder::events, fs::path(destination).filename())));
    };
    (void)makeFileHandler(disk, false);
    EXPECT_THAT(openings, ElementsAre(false));
    EXPECT_THAT(names(Folder::events), IsEmpty());
}

TEST_F(SharingTest, AnEmptyFileThatAnotherProcessIsAboutToWriteToIsNotTakenForAHeldName) {
    put(Folder::events, "a.log", "");
    std::unique_ptr<FileHandle> theirs;
    const Neighbour neighbour([&] {
        theirs = std::move(fileManager.fileHandleForWriting(path(Folder::events, "a.log")).value());
        (void)theirs->lock();
    });
    putArchive("a.zip", {{"a.log", "1"}});
    (void)makeFileHandler(false);
    EXPECT_THAT(names(Folder::events), ElementsAre("a.log"));
    EXPECT_THAT(names(Folder::upload), ElementsAre(ownName));
}

TEST_F(BusySharingTest, AFileIsRestoredAlsoWhereNoNameCanBeHeld) {
    const auto archive = putArchive("a.zip", {{"a.log", "1"}});
    fs::remove_all(path(Folder::events));
    writeFile(path(Folder::events), "in the way");
    handler->restore(archive, {}, directly);
    EXPECT_EQ(bytes(Folder::upload, "a.log"), "1");
}

TEST_F(SharingTest, OneProcessAtATimeHasTheClosedFiles) {
    const auto handler = makeFileHandler();
    std::shared_ptr<ProcessLock> theirs;
    Neighbour neighbour([&] { theirs = handler->lockClosedFiles(); });
    EXPECT_EQ(handler->lockClosedFiles(), nullptr);
    neighbour.kill();
    EXPECT_NE(handler->lockClosedFiles(), nullptr);
}

TEST_F(SharingTest, StartRestoresNothingThatAnotherProcessSends) {
    put(Folder::backup, "1.zip", "an archive under way");
    put(Folder::backup, ".work-1.archive.zip", "one being packed");
    std::shared_ptr<ProcessLock> theirs;
    const Neighbour neighbour([&] { theirs = fileManager.lock(makeAppFolder()->path() + "/.lock"); });
    (void)makeFileHandler();
    EXPECT_THAT(names(Folder::backup), ElementsAre(".work-1.archive.zip", "1.zip"));
}

TEST_F(SharingTest, TheClosedFilesAreHadUntilTheLastHolderLetsGo) {
    const auto handler = makeFileHandler();
    auto first = handler->lockClosedFiles();
    auto second = handler->lockClosedFiles();
    first.reset();
    const auto isRefused = [&] {
        const auto child = ::fork();
        if (child == 0)
            ::_exit(PosixFileManager().fileHandleForWriting(makeAppFolder()->path() + "/.lock").value()->lock());
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return status == 0;
    };
    EXPECT_TRUE(isRefused());
    second.reset();
    EXPECT_FALSE(isRefused());
}

} // namespace
} // namespace tallyfoot::testing
