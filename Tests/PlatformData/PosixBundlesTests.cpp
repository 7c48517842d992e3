#include "Support/HostBundle.h"

#include "Tallyfoot/Platform/Posix/PosixBundles.h"
#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace tallyfoot::testing {
namespace {

PosixBundles bundles() { return PosixBundles(std::make_shared<PosixPropertyLists>()); }

std::vector<std::string> frameworkNames(const PosixBundles& all) {
    std::vector<std::string> names;
    for (const auto& framework : all.allFrameworks()) {
        const auto& path = dynamic_cast<const PosixBundle&>(*framework).path();
        names.push_back(std::filesystem::path(path).stem());
    }
    return names;
}

TEST(PosixBundles, TheMainBundleIsTheFolderThatTheEnvironmentNames) {
    const HostBundle host("Shop");
    EXPECT_EQ(bundles().mainBundle().path(), std::filesystem::canonical(host.path()));
    EXPECT_EQ(bundles().mainBundle().information("CFBundleName"), "Shop");
}

TEST(PosixBundles, OtherwiseItIsTheFolderOfTheExecutable) {
    for (const char* unset : {static_cast<const char*>(nullptr), ""}) {
        if (unset == nullptr)
            ::unsetenv("TALLYFOOT_MAIN_BUNDLE");
        else
            ::setenv("TALLYFOOT_MAIN_BUNDLE", unset, 1);
        EXPECT_EQ(bundles().mainBundle().path(), std::filesystem::read_symlink("/proc/self/exe").parent_path());
    }
}

TEST(PosixBundles, AnApplicationIsItsBundleOrInAPlainFolderItsExecutable) {
    const auto executable = std::filesystem::read_symlink("/proc/self/exe");
    ::unsetenv("TALLYFOOT_MAIN_BUNDLE");
    EXPECT_EQ(bundles().applicationPath(), executable); // others may lie beside it
    const HostBundle host("Shop");
    EXPECT_EQ(bundles().applicationPath(), std::filesystem::canonical(host.path()));
    std::filesystem::remove(host.path() + "/Info.plist");
    EXPECT_EQ(bundles().applicationPath(), std::filesystem::canonical(host.path()));
}

TEST(PosixBundles, OneFolderIsOneBundleHoweverItIsNamed) {
    const HostBundle host("Shop");
    const auto path = bundles().mainBundle().path();
    const TemporaryFolder other;
    std::filesystem::create_directory_symlink(host.path(), other / "link");
    for (const auto& name :
         {host.path() + "/", host.path() + "/.",
          host.path() + "//../" + std::filesystem::path(host.path()).filename().string(), other / "link"}) {
        ::setenv("TALLYFOOT_MAIN_BUNDLE", name.c_str(), 1);
        EXPECT_EQ(bundles().mainBundle().path(), path) << name;
    }
    std::filesystem::current_path(host.path());
    ::setenv("TALLYFOOT_MAIN_BUNDLE", ".", 1);
    EXPECT_EQ(bundles().mainBundle().path(), path);
}

TEST(PosixBundles, AMainBundleThatIsNotThereKnowsNothing) {
    ::setenv("TALLYFOOT_MAIN_BUNDLE", "/nonexistent/bundle", 1);
    EXPECT_EQ(bundles().mainBundle().path(), "/nonexistent/bundle");
    EXPECT_EQ(bundles().mainBundle().information("CFBundleName"), std::nullopt);
    EXPECT_TRUE(bundles().allFrameworks().empty());
}

TEST(PosixBundles, InformationIsTextOrNothing) {
    HostBundle host;
    host.setInformation("<key>CFBundleName</key><string>Shop</string><key>CFBundleVersion</key><integer>7</integer>");
    const auto all = bundles();
    EXPECT_EQ(all.mainBundle().information("CFBundleName"), "Shop");
    EXPECT_EQ(all.mainBundle().information("CFBundleVersion"), std::nullopt);
    EXPECT_EQ(all.mainBundle().information("CFBundleShortVersionString"), std::nullopt);
}

TEST(PosixBundles, InformationIsReadOnceAndKept) {
    HostBundle host("Shop");
    const auto all = bundles();
    EXPECT_EQ(all.mainBundle().information("CFBundleName"), "Shop");
    host.setInformation("<key>CFBundleName</key><string>Other</string>");
    EXPECT_EQ(all.mainBundle().information("CFBundleName"), "Shop");
    EXPECT_EQ(bundles().mainBundle().information("CFBundleName"), "Other");
}

TEST(PosixBundles, InformationMayBeBinary) {
    const HostBundle host;
    writeFile(host.path() + "/Info.plist",
              PosixPropertyLists().data({PropertyList::Dictionary{{"CFBundleName", {std::string("Shop")}}}}));
    EXPECT_EQ(bundles().mainBundle().information("CFBundleName"), "Shop");
}

TEST(PosixBundles, MalformedInformationIsNone) {
    const HostBundle host;
    writeFile(host.path() + "/Info.plist", "<plist><dict>");
    EXPECT_EQ(bundles().mainBundle().information("CFBundleName"), std::nullopt);
}

TEST(PosixBundles, FrameworksComeInTheOrderOfTheirNames) {
    const HostBundle host;
    for (const char* name :
         {"Zebra.framework", "Bakery.framework", "Apple.framework", "notes.txt", "Plain", ".framework"})
        std::filesystem::create_directories(host.path() + "/Frameworks/" + name);
    writeFile(host.path() + "/Frameworks/File.framework", "no folder");
    EXPECT_EQ(frameworkNames(bundles()), (std::vector<std::string>{"Apple", "Bakery", "Zebra"}));
}

TEST(PosixBundles, AFrameworkMayBeALink) {
    const HostBundle host;
    std::filesystem::create_directories(host.path() + "/Elsewhere");
    std::filesystem::create_directories(host.path() + "/Frameworks");
    std::filesystem::create_directory_symlink("../Elsewhere", host.path() + "/Frameworks/Shop.framework");
    std::filesystem::create_directory_symlink("../Nowhere", host.path() + "/Frameworks/Void.framework");
    EXPECT_EQ(frameworkNames(bundles()), std::vector<std::string>{"Shop"});
}

TEST(PosixBundles, AResourceIsLookedUpAtTheTopBeforeResources) {
    HostBundle host;
    host.addEnvironment("Shop", "", "Resources");
    const auto framework = bundles().allFrameworks().at(0);
    EXPECT_EQ(framework->pathForResource("Environment", "plist"),
              std::filesystem::canonical(host.environmentPath("Shop", "Resources")));
    host.addEnvironment("Shop", "");
    EXPECT_EQ(framework->pathForResource("Environment", "plist"),
              std::filesystem::canonical(host.environmentPath("Shop")));
    EXPECT_EQ(framework->pathForResource("Environment", "txt"), std::nullopt);
    EXPECT_EQ(framework->pathForResource("Other", "plist"), std::nullopt);
    EXPECT_TRUE(framework->pathForResource("Resources", ""));
}

} // namespace
} // namespace tallyfoot::testing
