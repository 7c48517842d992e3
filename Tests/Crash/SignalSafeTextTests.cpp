#include "Tallyfoot/Platform/SignalSafeText.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace tallyfoot {
namespace {

TEST(SignalSafeText, ReadsWhatWasSetLast) {
    SignalSafeText text("first");
    text.set("second");
    text.set("second");
    text.set("");
    text.set("third");
    EXPECT_EQ(text.readForever(), "third");
}

TEST(SignalSafeText, WhatWasReadStaysWhileOthersReplaceIt) {
    SignalSafeText text("first");
    const auto read = text.readForever();
    text.set("second");
    EXPECT_EQ(read, "first");
    EXPECT_EQ(text.readForever(), "second");
}

TEST(SignalSafeText, AReaderAmongWritersSeesAWholeText) {
    for (int round = 0; round < 50; ++round) {
        SignalSafeText text(std::string(100, 'a'));
        std::atomic<bool> isOver = false;
        std::vector<std::thread> writers;
        for (char letter : {'a', 'b', 'c'})
            writers.emplace_back([&, letter] {
                while (!isOver) text.set(std::string(100, letter));
            });
        for (int reading = 0; reading < 100; ++reading) {
            const auto read = text.readForever();
            ASSERT_EQ(read, std::string(100, read.front()));
        }
        isOver = true;
        for (auto& writer : writers) writer.join();
    }
}

} // namespace
} // namespace tallyfoot
