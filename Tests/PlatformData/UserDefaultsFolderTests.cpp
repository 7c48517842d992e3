#include "Tallyfoot/Platform/Posix/UserDefaultsFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

namespace tallyfoot::testing {
namespace {

using namespace std::string_literals;

TEST(UserDefaultsFolder, LiesInTheConfigurationHome) {
    ::setenv("XDG_CONFIG_HOME", "/config", 1);
    EXPECT_EQ(userDefaultsFolder("/opt/shop"), "/config/Tallyfoot/-opt-shop");
}

TEST(UserDefaultsFolder, OtherwiseInTheUsersHome) {
    for (const char* noPath : {"", "relative/path"}) {
        ::setenv("XDG_CONFIG_HOME", noPath, 1);
        ::setenv("HOME", "/home/user", 1);
        EXPECT_EQ(userDefaultsFolder("/opt/shop"), "/home/user/.config/Tallyfoot/-opt-shop");
    }
}

TEST(UserDefaultsFolder, OtherwiseInTheHomeOfThePasswordEntry) {
    ::unsetenv("XDG_CONFIG_HOME");
    ::unsetenv("HOME");
    const auto folder = userDefaultsFolder("/opt/shop");
    if (!folder) GTEST_SKIP() << "this user has no home";
    EXPECT_TRUE(folder->starts_with('/'));
    EXPECT_TRUE(folder->ends_with("/.config/Tallyfoot/-opt-shop"));
}

TEST(BundleFolderName, IsReadable) {
    EXPECT_EQ(bundleFolderName("/opt/Shop-2/bin"), "-opt-Shop%2D2-bin");
    EXPECT_EQ(bundleFolderName("/opt/My App"), "-opt-My%20App");
    EXPECT_EQ(bundleFolderName("/"), "-");
}

TEST(BundleFolderName, IsOnePlainNameForAnyPath) {
    for (const auto& path : {"/"s, "/."s, "/.."s, "/a/b"s, "/caf\xC3\xA9"s, "/a\nb"s, "/~"s, std::string(4095, '/'),
                             "/"s + std::string(4000, '\xFF')}) {
        const auto name = bundleFolderName(path);
        EXPECT_FALSE(name.empty());
        EXPECT_LE(name.size(), 200u);
        EXPECT_EQ(name.find('/'), std::string::npos);
        EXPECT_NE(name, ".");
        EXPECT_NE(name, "..");
    }
}

TEST(BundleFolderName, DiffersForDifferentPaths) {
    std::set<std::string> names;
    const std::vector<std::string> paths{"/a/b",
                                         "/a-b",
                                         "/a%2Db",
                                         "/a b",
                                         "/a%20b",
                                         "/a+b",
                                         "/A/b",
                                         "/a//b",
                                         "/a/b/",
                                         "/a\xC3\xA9",
                                         "/ae",
                                         "/a_b",
                                         "/a.b",
                                         "/a/.b",
                                         "/",
                                         "//",
                                         "/" + std::string(198, 'a'),
                                         "/" + std::string(199, 'a'),
                                         "/" + std::string(200, 'a'),
                                         "/b" + std::string(198, 'a'),
                                         "/b" + std::string(199, 'a'),
                                         "/" + std::string(300, 'a') + "/x",
                                         "/b" + std::string(299, 'a') + "/x"};
    for (const auto& path : paths) EXPECT_TRUE(names.insert(bundleFolderName(path)).second) << path;
}

TEST(BundleFolderName, ALongOneKeepsItsEndBehindTheHashOfTheWhole) {
    const auto name = bundleFolderName("/" + std::string(300, 'a') + "/Shop");
    EXPECT_EQ(name.size(), 200u);
    EXPECT_EQ(name.front(), '~');
    EXPECT_EQ(name.at(33), '~');
    EXPECT_TRUE(name.ends_with("a-Shop"));
    // FNV-1a of 128 bits, reckoned with numbers of any size.
    EXPECT_EQ(name.substr(1, 32), "d9fd8bda46a61f45aa2fee6f9632b1fb");
}

} // namespace
} // namespace tallyfoot::testing
