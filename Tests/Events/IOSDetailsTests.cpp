#include "Events/PlatformFacts.h"

#include "Tallyfoot/Events/IOSDetails.h"

#include <gtest/gtest.h>

namespace tallyfoot {
namespace {

using testing::PlatformFacts;

TEST(IOSDetails, TheMachineIdentifierIsTheSystems) {
    const PlatformFacts facts{.machine = "iPad13,4"};
    EXPECT_EQ(IOSDetails(facts.services()).machineIdentifier(), "iPad13,4");
}

TEST(IOSDetails, EachByteOfTheMachineFieldIsOneCharacter) {
    const PlatformFacts facts{.machine = "a\xE9z"};
    EXPECT_EQ(IOSDetails(facts.services()).machineIdentifier(), "a\u00E9z");
}

TEST(IOSDetails, ASimulatorReportsTheModelThatItSimulates) {
    const PlatformFacts facts{.environment = {{"SIMULATOR_MODEL_IDENTIFIER", "iPhone15,2"}}, .machine = "x86_64"};
    EXPECT_TRUE(IOSDetails(facts.services()).userAgent().starts_with("iPhone15,2/iOS/"));
}

TEST(IOSDetails, AnEmptySimulatedModelCountsToo) {
    const PlatformFacts facts{.environment = {{"SIMULATOR_MODEL_IDENTIFIER", ""}}, .machine = "x86_64"};
    EXPECT_EQ(IOSDetails(facts.services()).machineIdentifier(), "");
}

TEST(IOSDetails, TheSystemVersionHasThreeNumbersAlways) {
    PlatformFacts facts{.version = {17, 0, 0}};
    EXPECT_EQ(IOSDetails(facts.services()).osVersion(), "17.0.0");
    facts.version = {16, 7, 10};
    EXPECT_EQ(IOSDetails(facts.services()).osVersion(), "16.7.10");
}

TEST(IOSDetails, TheUserAgentHasFiveParts) {
    const PlatformFacts facts{.information = {{"CFBundleShortVersionString", "4.0"}, {"CFBundleVersion", "412"}},
                              .version = {17, 1, 2},
                              .machine = "iPhone14,2"};
    EXPECT_EQ(IOSDetails(facts.services()).userAgent(), "iPhone14,2/iOS/17.1.2/4.0/412");
}

TEST(IOSDetails, MissingPartsOfTheUserAgentKeepTheirSeparators) {
    PlatformFacts facts{.version = {17, 1, 2}, .machine = "iPhone14,2"};
    EXPECT_EQ(IOSDetails(facts.services()).userAgent(), "iPhone14,2/iOS/17.1.2//");
    facts.information = {{"CFBundleVersion", "412"}};
    EXPECT_EQ(IOSDetails(facts.services()).userAgent(), "iPhone14,2/iOS/17.1.2//412");
}

TEST(IOSDetails, TheUserAgentCarriesTheRawIdentifier) {
    const PlatformFacts facts{.machine = "iPhone14,2"};
    ASSERT_TRUE(IOSDetails::iphoneFamily().contains("iPhone14,2"));
    EXPECT_EQ(IOSDetails(facts.services()).userAgent().find("iPhone 13"), std::string::npos);
}

TEST(IOSDetails, TheFamiliesNameModelsByIdentifier) {
    EXPECT_EQ(IOSDetails::iphoneFamily().at("iPhone15,2"), "iPhone 14 Pro");
    EXPECT_EQ(IOSDetails::ipadFamily().at("iPad5,3"), "iPad Air 2");
    for (const auto& [identifier, name] : IOSDetails::iphoneFamily())
        EXPECT_TRUE(identifier.starts_with("iPhone") && name.starts_with("iPhone")) << identifier;
    for (const auto& [identifier, name] : IOSDetails::ipadFamily())
        EXPECT_TRUE(identifier.starts_with("iPad") && name.starts_with("iPad")) << identifier;
}

TEST(IOSDetails, TheFamiliesAreBuiltOnce) { EXPECT_EQ(&IOSDetails::iphoneFamily(), &IOSDetails::iphoneFamily()); }

} // namespace
} // namespace tallyfoot
