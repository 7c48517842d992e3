#include "Tallyfoot/Platform/Posix/PosixScreen.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace tallyfoot::testing {
namespace {

TEST(PosixScreen, IsNothingUntilTheHostSaysWhatItIs) {
    PosixScreen screen;
    EXPECT_EQ(screen.bounds().width, 0);
    EXPECT_EQ(screen.bounds().height, 0);
    screen.setBounds({375.9, 812});
    EXPECT_EQ(screen.bounds().width, 375.9);
    EXPECT_EQ(screen.bounds().height, 812);
}

TEST(PosixScreen, WidthAndHeightAlwaysBelongTogether) {
    PosixScreen screen;
    std::atomic<bool> done{false};
    std::thread host([&] {
        for (int size = 0; size < 20000; ++size) screen.setBounds({double(size), double(size)});
        done = true;
    });
    while (!done) {
        const auto bounds = screen.bounds();
        ASSERT_EQ(bounds.width, bounds.height);
    }
    host.join();
}

} // namespace
} // namespace tallyfoot::testing
