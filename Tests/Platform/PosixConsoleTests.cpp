#include "Support/ResourceLimit.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Platform/Posix/FileDescriptor.h"
#include "Tallyfoot/Platform/Posix/PosixConsole.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <future>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tallyfoot::testing {

namespace {

class Pipe {
public:
    explicit Pipe(int flags = 0) { EXPECT_EQ(::pipe2(ends_.data(), flags | O_CLOEXEC), 0); }

    ~Pipe() {
        closeReader();
        closeWriter();
    }

    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int writer() const { return ends_[1]; }

    void closeReader() { close(ends_[0]); }

    void closeWriter() { close(ends_[1]); }

    std::string readSome() const {
        std::string bytes(1U << 16U, '\0');
        const auto count = ::read(ends_[0], bytes.data(), bytes.size());
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return bytes;
    }

    std::string readAll() const { // until every writer has closed
        std::string all;
        for (auto piece = readSome(); !piece.empty(); piece = readSome()) all += piece;
        return all;
    }

private:
    static void close(int& end) {
        if (end >= 0) ::close(end);
        end = -1;
    }

    std::array<int, 2> ends_{-1, -1};
};

TEST(PosixConsole, WritesToStandardOutput) {
    Pipe pipe;
    const int kept = ::dup(STDOUT_FILENO);
    ASSERT_GE(::dup2(pipe.writer(), STDOUT_FILENO), 0);
    PosixConsole().write("\"one line\"\n");
    ASSERT_GE(::dup2(kept, STDOUT_FILENO), 0);
    ::close(kept);
    pipe.closeWriter();
    EXPECT_EQ(pipe.readAll(), "\"one line\"\n");
}

TEST(PosixConsole, LinesOfSeveralThreadsNeverMix) {
    Pipe pipe;
    constexpr int threads = 4;
    constexpr int linesEach = 200;
    constexpr std::size_t length = 10'000; // more than a pipe takes in one piece
    std::vector<std::thread> writers;
    for (int index = 0; index < threads; ++index)
        writers.emplace_back([&pipe, index] {
            PosixConsole console(pipe.writer());
            const auto line = std::string(length, static_cast<char>('a' + index)) + '\n';
            for (int count = 0; count < linesEach; ++count) console.write(line);
        });
    std::thread closer([&] {
        for (auto& writer : writers) writer.join();
        pipe.closeWriter();
    });
    std::istringstream all(pipe.readAll());
    closer.join();

    std::map<std::string, int> lines;
    for (std::string line; std::getline(all, line);) ++lines[line];
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(threads));
    for (int index = 0; index < threads; ++index)
        EXPECT_EQ(lines[std::string(length, static_cast<char>('a' + index))], linesEach);
}

std::atomic<int> pipeSignals{0};

TEST(PosixConsole, AReaderThatWentAwayRaisesNoSignal) {
    ASSERT_NE(::signal(SIGPIPE, [](int) { ++pipeSignals; }), SIG_ERR);
    Pipe pipe;
    pipe.closeReader();
    PosixConsole console(pipe.writer());
    console.write("nobody reads this\n");
    console.write("nor this\n");
    EXPECT_EQ(pipeSignals, 0);
    sigset_t pending;
    ASSERT_EQ(::sigpending(&pending), 0);
    EXPECT_EQ(::sigismember(&pending, SIGPIPE), 0);
}

TEST(PosixConsole, ASignalThatTheHostHadWaitingStaysWaiting) {
    sigset_t pipeSet;
    ::sigemptyset(&pipeSet);
    ::sigaddset(&pipeSet, SIGPIPE);
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &pipeSet, nullptr), 0);
    ASSERT_EQ(::raise(SIGPIPE), 0);
    Pipe pipe;
    pipe.closeReader();
    PosixConsole(pipe.writer()).write("nobody reads this\n");
    sigset_t pending;
    ASSERT_EQ(::sigpending(&pending), 0);
    EXPECT_EQ(::sigismember(&pending, SIGPIPE), 1);
}

TEST(PosixConsole, AnOutputThatTakesNothingLosesTheTextSoon) {
    Pipe pipe(O_NONBLOCK);
    PosixConsole console(pipe.writer());
    const std::string block = std::string(100'000, 'x') + '\n'; // more than the pipe holds
    const auto start = std::chrono::steady_clock::now();
    for (int count = 0; count < 3; ++count) console.write(block);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));

    std::string before = pipe.readSome();
    EXPECT_LT(before.size(), block.size());
    console.write("the next line\n");
    EXPECT_EQ(pipe.readSome(), "\nthe next line\n"); // not on the torn line
    console.write("and another\n");
    EXPECT_EQ(pipe.readSome(), "and another\n");
}

// Whether so many texts are written soon, to a reader that reads none of them.
template <class Channel>
bool isWritten(Channel& channel, std::size_t count, const std::string& text) {
    std::packaged_task<void()> write([&] {
        PosixConsole console(channel.writer());
        for (std::size_t written = 0; written < count; ++written) console.write(text);
    });
    auto end = write.get_future();
    std::thread writer(std::move(write));
    const bool isWritten = end.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    if (!isWritten) channel.closeReader(); // lets the writer go
    writer.join();
    return isWritten;
}

TEST(PosixConsole, AReaderThatStoppedReadingHoldsNobody) {
    Pipe pipe;
    ASSERT_TRUE(isWritten(pipe, 1000, std::string(999, 'x') + '\n'));
    while (pipe.readSome().size() == 1U << 16U) {
    }
    PosixConsole(pipe.writer()).write("the next line\n");
    EXPECT_EQ(pipe.readSome(), "the next line\n");
}

TEST(PosixConsole, NorInTheMiddleOfALongText) {
    Pipe pipe;
    ASSERT_GT(::fcntl(pipe.writer(), F_SETPIPE_SZ, 16384), 0);
    ASSERT_TRUE(isWritten(pipe, 1, std::string(100'000, 'x') + '\n'));
    EXPECT_EQ(pipe.readSome().find_first_not_of('x'), std::string::npos);
    PosixConsole(pipe.writer()).write("the next line\n");
    EXPECT_EQ(pipe.readSome(), "\nthe next line\n"); // not on the torn line
}

TEST(PosixConsole, ASlowReaderOfANonBlockingPipeGetsEverythingItMakesRoomFor) {
    Pipe pipe(O_NONBLOCK);
    ASSERT_EQ(::fcntl(pipe.writer(), F_SETPIPE_SZ, 4096), 4096);
    PosixConsole console(pipe.writer());
    console.write(std::string(4096, 'a'));
    EXPECT_EQ(pipe.readSome().size(), 4096U);
    console.write(std::string(4096, 'b'));
    EXPECT_EQ(pipe.readSome(), std::string(4096, 'b'));
}

class Terminal {
public:
    Terminal() {
        EXPECT_EQ(::grantpt(screen_.number()), 0);
        EXPECT_EQ(::unlockpt(screen_.number()), 0);
        line_ = FileDescriptor(::open(::ptsname(screen_.number()), O_RDWR | O_NOCTTY | O_CLOEXEC));
        EXPECT_TRUE(line_);
    }

    int writer() const { return line_.number(); }

    void closeReader() { screen_ = FileDescriptor(); }

    std::string readSome() const {
        pollfd ready{screen_.number(), POLLIN, 0};
        (void)::poll(&ready, 1, 1000);
        std::string bytes(1U << 16U, '\0');
        const auto count = ::read(screen_.number(), bytes.data(), bytes.size());
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return bytes;
    }

private:
    FileDescriptor screen_{::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)};
    FileDescriptor line_;
};

TEST(PosixConsole, ATerminalThatStandsStillHoldsNobody) {
    Terminal terminal;
    ASSERT_TRUE(isWritten(terminal, 1000, std::string(1000, 'x') + '\n'));
    EXPECT_EQ(::fcntl(terminal.writer(), F_GETFL) & O_NONBLOCK, 0); // the host writes to it as before
    std::string shown;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (shown.find("again\r\n") == shown.npos && std::chrono::steady_clock::now() < deadline) {
        shown += terminal.readSome(); // what was read makes room a little later
        PosixConsole(terminal.writer()).write("again\n");
    }
    EXPECT_NE(shown.find("again\r\n"), shown.npos);
}

TEST(PosixConsole, AFileAtTheLimitOfTheProcessLosesTheTextAndRaisesNoSignal) {
    const TemporaryFolder folder;
    const FileDescriptor file(::open((folder / "output").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    const ResourceLimit limit(RLIMIT_FSIZE, 10);
    PosixConsole(file.number()).write("12345678\n");
    PosixConsole(file.number()).write("lost\n");
    EXPECT_EQ(::lseek(file.number(), 0, SEEK_END), 10);
}

TEST(PosixConsole, AClosedDescriptorLosesTheText) {
    Pipe pipe;
    const int number = pipe.writer();
    pipe.closeWriter();
    errno = 0;
    PosixConsole(number).write("lost\n");
    EXPECT_EQ(errno, 0);
}

} // namespace

} // namespace tallyfoot::testing
