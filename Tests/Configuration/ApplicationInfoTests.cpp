#include "Support/HostBundle.h"

#include "Tallyfoot/Facade/Configuration/ApplicationInfo.h"
#include "Tallyfoot/Platform/Coder.h"
#include "Tallyfoot/Platform/Posix/PosixKeyedArchiver.h"
#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"

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

// Read from an archive in which the one field is a number and each other one its own name.
Coder mistyped(const std::string& key) {
    PropertyList::Array objects{{std::string("$null")}};
    const auto added = [&objects](PropertyList object) {
        objects.push_back(std::move(object));
        return PropertyList{PropertyList::Dictionary{{"CF$UID", {static_cast<std::int64_t>(objects.size() - 1)}}}};
    };
    PropertyList::Dictionary fields;
    for (const std::string field : {"appName", "appId", "bizArea", "bizAreaId"})
        fields[field] = added(field == key ? PropertyList{std::int64_t{7}} : PropertyList{field});
    fields["$class"] = added({PropertyList::Dictionary{{"$classname", {std::string("ApplicationInfo")}}}});
    const auto root = added({std::move(fields)});
    const auto data =
        PosixPropertyLists().data({PropertyList::Dictionary{{"$archiver", {std::string("NSKeyedArchiver")}},
                                                            {"$top", {PropertyList::Dictionary{{"root", root}}}},
                                                            {"$objects", {std::move(objects)}}}});
    return PosixKeyedArchiver().unarchivedObject(data).value();
}

TEST(ApplicationInfo, KeepsWhatItWasGiven) {
    const ApplicationInfo info("Shop", "shop-1", "Retail", "R-7");
    EXPECT_EQ(info.appName(), "Shop");
    EXPECT_EQ(info.appId(), "shop-1");
    EXPECT_EQ(info.bizArea(), "Retail");
    EXPECT_EQ(info.bizAreaId(), "R-7");
}

TEST(ApplicationInfo, TakesWhatIsIllFormedForAReplacementCharacter) {
    const ApplicationInfo info("Caf\xE9", "\xE9-1", "R\xE9tail", "R-\xE9");
    EXPECT_EQ(info.appName(), "Caf\xEF\xBF\xBD");
    EXPECT_EQ(info.appId(), "\xEF\xBF\xBD-1");
    EXPECT_EQ(info.bizArea(), "R\xEF\xBF\xBDtail");
    EXPECT_EQ(info.bizAreaId(), "R-\xEF\xBF\xBD");
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

TEST(ApplicationInfo, DecodedWithANameThatIsNoTextTakesTheBundlesName) {
    const HostBundle bundle("Corner Shop");
    const ApplicationInfo info(mistyped("appName"));
    EXPECT_EQ(info.appName(), "Corner Shop");
    EXPECT_EQ(info.appId(), "appId");
}

TEST(ApplicationInfo, SurvivesAKeyedArchive) {
    const PosixKeyedArchiver archiver;
    Coder coder(ApplicationInfo::archiveClassName);
    ApplicationInfo("Shöp", "", "Retail", "Retail").encode(coder);
    const ApplicationInfo info(archiver.unarchivedObject(archiver.archivedData(coder)).value());
    EXPECT_EQ(info.appName(), "Shöp");
    EXPECT_EQ(info.appId(), "");
    EXPECT_EQ(info.bizArea(), "Retail");
    EXPECT_EQ(info.bizAreaId(), "Retail");
}

TEST(ApplicationInfoDeathTest, DecodingAFieldThatIsNoTextIsFatal) {
    for (const std::string key : {"appId", "bizArea", "bizAreaId"})
        EXPECT_DEATH(ApplicationInfo{mistyped(key)}, "fatal error: .*\"" + key + "\"");
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
