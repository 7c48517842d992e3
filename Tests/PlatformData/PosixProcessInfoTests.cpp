#include "Tallyfoot/Platform/Posix/PosixProcessInfo.h"

#include <gtest/gtest.h>
#include <sys/utsname.h>

#include <cstdlib>

namespace tallyfoot::testing {
namespace {

void expectVersion(const char* release, long major, long minor, long patch) {
    const auto version = operatingSystemVersion(release);
    EXPECT_EQ(version.major, major) << release;
    EXPECT_EQ(version.minor, minor) << release;
    EXPECT_EQ(version.patch, patch) << release;
}

TEST(PosixProcessInfo, FindsTheNumbersAtTheHeadOfARelease) {
    expectVersion("6.1.0-13-amd64", 6, 1, 0);
    expectVersion("6.18.2", 6, 18, 2);
    expectVersion("23.4", 23, 4, 0);
    expectVersion("17", 17, 0, 0);
    expectVersion("5.15.153.1-microsoft", 5, 15, 153);
    expectVersion("6.2-rc1", 6, 2, 0);
    expectVersion("6.x.1", 6, 0, 0);
    expectVersion("6.-1.2", 6, 0, 0);
    expectVersion("", 0, 0, 0);
    expectVersion("rolling", 0, 0, 0);
    expectVersion("99999999999999999999.1.2", 0, 0, 0);
}

TEST(PosixProcessInfo, TellsWhatTheKernelTells) {
    utsname facts{};
    ASSERT_EQ(::uname(&facts), 0);
    EXPECT_EQ(PosixProcessInfo().machine(), facts.machine);
    EXPECT_GT(PosixProcessInfo().operatingSystemVersion().major, 0);
}

TEST(PosixProcessInfo, AsksTheEnvironmentEachTime) {
    const PosixProcessInfo info;
    EXPECT_EQ(info.environment("TALLYFOOT_TEST_VARIABLE"), std::nullopt);
    ::setenv("TALLYFOOT_TEST_VARIABLE", "iPhone15,2", 1);
    EXPECT_EQ(info.environment("TALLYFOOT_TEST_VARIABLE"), "iPhone15,2");
    ::setenv("TALLYFOOT_TEST_VARIABLE", "", 1);
    EXPECT_EQ(info.environment("TALLYFOOT_TEST_VARIABLE"), "");
}

} // namespace
} // namespace tallyfoot::testing
