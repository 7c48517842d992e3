#include "StorageFixture.h"

#include "Tallyfoot/Storage/Archive.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <set>

namespace tallyfoot::testing {
namespace {

// A process that records, closes, packs and restores without a pause, until it is killed.
class KillTest : public StorageFixture {
protected:
    // Runs it until it has acknowledged so many records, and gives all that it has.
    std::vector<int> runAndKill(int first, int acknowledgements) {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        const auto child = ::fork();
        if (child == 0) recordForEver(first, ends[1]);
        ::close(ends[1]);
        std::vector<int> acknowledged;
        for (int number = 0; ::read(ends[0], &number, sizeof number) == sizeof number;) {
            acknowledged.push_back(number);
            if (static_cast<int>(acknowledged.size()) == acknowledgements) ::kill(child, SIGKILL);
        }
        ::close(ends[0]);
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status));
        return acknowledged;
    }

    [[noreturn]] void recordForEver(int first, int acknowledgements) {
        const auto handler = makeFileHandler();
        for (int number = first;; ++number) {
            clock.advance(std::chrono::milliseconds(7));
            handler->write("{" + std::to_string(number) + std::string(200, '.') + "}jsonsplit");
            if (::write(acknowledgements, &number, sizeof number) != sizeof number) ::_exit(1);
            if (number - first == 500) ::pause(); // far enough ahead of the kill
            if (number % 5 == 0) handler->close();
            if (number % 10 == 0) handler->zip(directly);
            if (number % 30 == 0) {
                for (const auto& archive : handler->appFolder().archivePaths()) handler->restore(archive, {}, directly);
            }
        }
    }

    // Every whole record in the files that anybody can see.
    std::set<int> recordsInSight() {
        std::set<int> numbers;
        const auto folder = makeAppFolder();
        for (const auto at : {Folder::events, Folder::upload}) {
            for (const auto& log : folder->nonEmptyLogPaths(at)) addRecords(readFile(log), numbers);
        }
        for (const auto& archive : folder->archivePaths()) {
            const TemporaryFolder unpacked;
            const auto entries = Archive::unpack(fileManager, archive, unpacked / "");
            EXPECT_TRUE(entries) << archive;
            if (!entries) continue;
            for (const auto& name : entries.value()) addRecords(readFile(unpacked / name), numbers);
        }
        return numbers;
    }

    static void addRecords(std::string text, std::set<int>& numbers) {
        constexpr std::string_view separator = "jsonsplit";
        for (auto end = text.find(separator); end != text.npos; end = text.find(separator)) {
            EXPECT_TRUE(text.starts_with('{') && text[end - 1] == '}') << text.substr(0, end);
            numbers.insert(std::atoi(text.c_str() + 1));
            text.erase(0, end + separator.size());
        }
    }
};

TEST_F(KillTest, NoAcknowledgedRecordIsLostWheneverTheProcessIsKilled) {
    settings.showOutput = false;
    for (int round = 0; round < 25; ++round) {
        const auto acknowledged = runAndKill(round * 1'000'000, 1 + round * 7);
        const auto left = recordsInSight();
        for (const int number : acknowledged) ASSERT_TRUE(left.contains(number)) << number << " in round " << round;
        clock.advance(std::chrono::hours(1));
        makeFileHandler()->close();
        const auto found = recordsInSight();
        for (const int number : acknowledged) ASSERT_TRUE(found.contains(number)) << number << " in round " << round;
        EXPECT_THAT(names(Folder::backup), ::testing::IsEmpty());
        if (round % 2 == 1) makeFileHandler()->deleteAllLogs();
    }
}

} // namespace
} // namespace tallyfoot::testing
