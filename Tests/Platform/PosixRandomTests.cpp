#include "Tallyfoot/Platform/Posix/PosixRandom.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace tallyfoot::testing {

namespace {

using ::testing::ContainsRegex;

TEST(PosixRandom, IdentifiersAreCanonicalVersionFourInUpperCase) {
    PosixRandom random;
    for (int count = 0; count < 2000; ++count)
        ASSERT_THAT(random.uuidString(),
                    ContainsRegex("^[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}$"));
}

TEST(PosixRandom, EveryFreeBitOfAnIdentifierVaries) {
    PosixRandom random;
    std::array<std::set<char>, 36> seen;
    for (int count = 0; count < 5000; ++count) {
        const auto text = random.uuidString();
        for (std::size_t place = 0; place < text.size(); ++place) seen[place].insert(text[place]);
    }
    for (std::size_t place = 0; place < seen.size(); ++place) {
        const bool isFixed = place == 8 || place == 13 || place == 14 || place == 18 || place == 23;
        EXPECT_EQ(seen[place].size(), isFixed ? 1U : place == 19 ? 4U : 16U) << "at " << place;
    }
}

TEST(PosixRandom, NumbersUseAllBits) {
    PosixRandom random;
    std::uint32_t ones = 0;
    std::uint32_t zeros = 0;
    for (int count = 0; count < 200; ++count) {
        const auto number = random.number();
        ones |= number;
        zeros |= ~number;
    }
    EXPECT_EQ(ones, 0xFFFFFFFFU);
    EXPECT_EQ(zeros, 0xFFFFFFFFU);
}

TEST(PosixRandom, ThreadsDoNotShareIdentifiers) {
    constexpr int threads = 8;
    constexpr int each = 2000;
    std::mutex mutex;
    std::set<std::string> all;
    std::vector<std::thread> workers;
    for (int index = 0; index < threads; ++index)
        workers.emplace_back([&] {
            PosixRandom random;
            std::vector<std::string> own;
            for (int count = 0; count < each; ++count) own.push_back(random.uuidString());
            const std::lock_guard lock(mutex);
            all.insert(own.begin(), own.end());
        });
    for (auto& worker : workers) worker.join();
    EXPECT_EQ(all.size(), static_cast<std::size_t>(threads * each));
}

TEST(PosixRandom, AForkedChildNeverRepeatsItsParent) {
    PosixRandom random;
    (void)random.uuidString(); // a batch is drawn and partly used
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const auto child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        for (int count = 0; count < 300; ++count) {
            const auto text = random.uuidString();
            if (::write(ends[1], text.data(), text.size()) != 36) ::_exit(1);
        }
        ::_exit(0);
    }
    ::close(ends[1]);
    std::set<std::string> childs;
    for (std::string text(36, ' '); ::read(ends[0], text.data(), text.size()) == 36;) childs.insert(text);
    ::close(ends[0]);
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(childs.size(), 300U);
    for (int count = 0; count < 300; ++count) EXPECT_FALSE(childs.contains(random.uuidString()));
}

std::string lastIdentifier; // NOLINT: written by a thread that is ending

TEST(PosixRandom, WorksWhileAThreadEnds) {
    pthread_key_t key{};
    ASSERT_EQ(::pthread_key_create(&key, [](void*) { lastIdentifier = PosixRandom().uuidString(); }), 0);
    std::thread([&] {
        (void)PosixRandom().number();
        ::pthread_setspecific(key, &key);
    }).join();
    EXPECT_EQ(lastIdentifier.size(), 36U);
    ::pthread_key_delete(key);
}

// Drawn after main has returned; a crash or a hang there fails the test's process.
struct DrawnAtTheEnd {
    ~DrawnAtTheEnd() {
        if (PosixRandom().uuidString().size() != 36) ::_exit(1);
    }
};

TEST(PosixRandom, WorksWhileTheProcessEnds) {
    static const DrawnAtTheEnd last;
    EXPECT_EQ(PosixRandom().uuidString().size(), 36U);
}

} // namespace

} // namespace tallyfoot::testing
