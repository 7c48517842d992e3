#include "Support/HostBundle.h"

#include "Tallyfoot/Facade/Configuration/ApplicationInfo.h"
#include "Tallyfoot/Platform/Coder.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace tallyfoot::testing {
namespace {

using Fields = std::vector<std::pair<std::string, std::string>>;

Coder archived(const Fields& fields) {
    Coder coder(ApplicationInfo::archiveClassName);
    for (const auto& [key, text] : fields) coder.encode(text, key);
    return coder;
}

TEST(ApplicationInfo, KeepsWhatItWasGiven) {
    const ApplicationInfo info("Shop", "shop-1", "Retail", "R-7");
    EXPECT_EQ(info.appName(), "Shop");
    EXPECT_EQ(info.appId(), "shop-1");
    EXPECT_EQ(info.bizArea(), "Retail");
    EXPECT_EQ(info.bizAreaId(), "R-7");
}

TEST(ApplicationInfo, WithoutANameCarriesTheBundlesName) {
    const HostBundle bundle("Corner Shop");
    const ApplicationInfo info("shop-1", "Retail", "R-7");
    EXPECT_EQ(info.appName(), "Corner Shop");
    EXPECT_EQ(info.appId(), "shop-1");
    EXPECT_EQ(info.bizArea(), "Retail");
    EXPECT_EQ(info.bizAreaId(), "R-7");
}

TEST(ApplicationInfo, WithAnAbsentNameCarriesTheBundlesName) {
    const HostBundle bundle("Corner Shop");
    EXPECT_EQ(ApplicationInfo(std::nullopt, "shop-1", "Retail", "R-7").appName(), "Corner Shop");
}

TEST(ApplicationInfo, AnEmptyNameIsAName) {
    const HostBundle bundle("Corner Shop");
    EXPECT_EQ(ApplicationInfo("", "shop-1", "Retail", "R-7").appName(), "");
}

TEST(ApplicationInfo, WithoutAnyNameAtAllCarriesAnEmptyOne) {
    const HostBundle bundle;
    EXPECT_EQ(ApplicationInfo("shop-1", "Retail", "R-7").appName(), "");
}

TEST(ApplicationInfo, ABundleNameThatIsNoTextIsNone) {
    HostBundle bundle;
    bundle.setInformation("<key>CFBundleName</key><integer>7</integer>");
    EXPECT_EQ(ApplicationInfo("shop-1", "Retail", "R-7").appName(), "");
}

TEST(ApplicationInfo, CannotBeMadeOfNothing) { EXPECT_FALSE(std::is_default_constructible_v<ApplicationInfo>); }

TEST(ApplicationInfo, EncodesItsFieldsInOrder) {
    Coder coder(ApplicationInfo::archiveClassName);
    ApplicationInfo("Shop", "shop-1", "Retail", "R-7").encode(coder);
    EXPECT_EQ(coder.className(), "ApplicationInfo");
    EXPECT_EQ(coder.fields(),
              (Fields{{"appName", "Shop"}, {"appId", "shop-1"}, {"bizArea", "Retail"}, {"bizAreaId", "R-7"}}));
}

TEST(ApplicationInfo, DecodesWhatItEncoded) {
    const ApplicationInfo info(
        archived({{"bizAreaId", "R-7"}, {"bizArea", ""}, {"appId", "shop-1"}, {"appName", "Shöp"}}));
    EXPECT_EQ(info.appName(), "Shöp");
    EXPECT_EQ(info.appId(), "shop-1");
    EXPECT_EQ(info.bizArea(), "");
    EXPECT_EQ(info.bizAreaId(), "R-7");
}

TEST(ApplicationInfo, DecodedWithoutANameTakesTheBundlesName) {
    const HostBundle bundle("Corner Shop");
    const ApplicationInfo info(archived({{"appId", "shop-1"}, {"bizArea", "Retail"}, {"bizAreaId", "R-7"}}));
    EXPECT_EQ(info.appName(), "Corner Shop");
}

TEST(ApplicationInfoDeathTest, DecodingWithoutAppIdIsFatal) {
    const auto coder = archived({{"appName", "Shop"}, {"bizArea", "Retail"}, {"bizAreaId", "R-7"}});
    EXPECT_DEATH(ApplicationInfo{coder}, "fatal error: .*\"appId\"");
}

TEST(ApplicationInfoDeathTest, DecodingWithoutBizAreaIsFatal) {
    const auto coder = archived({{"appName", "Shop"}, {"appId", "shop-1"}, {"bizAreaId", "R-7"}});
    EXPECT_DEATH(ApplicationInfo{coder}, "fatal error: .*\"bizArea\"");
}

TEST(ApplicationInfoDeathTest, DecodingWithoutBizAreaIdIsFatal) {
    const auto coder = archived({{"appName", "Shop"}, {"appId", "shop-1"}, {"bizArea", "Retail"}});
    EXPECT_DEATH(ApplicationInfo{coder}, "fatal error: .*\"bizAreaId\"");
}

} // namespace
} // namespace tallyfoot::testing
