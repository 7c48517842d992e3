#include "Capture/CaptureHost.h"

#include "Tallyfoot/Capture/CustomOptions.h"

#include <gtest/gtest.h>

namespace tallyfoot::testing {
namespace {

class CustomOptionsTest : public ::testing::Test {
protected:
    CaptureHost host_;
    const ObjectRef view_ = host_.make("UIView");
    Capture& capture_ = host_.capture;
};

TEST_F(CustomOptionsTest, AnObjectNeverConfiguredIsEnabledAndHasNoName) {
    EXPECT_EQ(capture_.customName(view_), "");
    EXPECT_TRUE(capture_.logEnabled(view_));
    EXPECT_EQ(capture_.customName({}), "");
    EXPECT_TRUE(capture_.logEnabled({}));
}

TEST_F(CustomOptionsTest, KeepsWhatWasSetForThatObjectOnly) {
    capture_.setCustomName(view_, "Buy");
    capture_.setLogEnabled(view_, false);
    EXPECT_EQ(capture_.customName(view_), "Buy");
    EXPECT_FALSE(capture_.logEnabled(view_));
    const auto other = host_.make("UIView");
    EXPECT_EQ(capture_.customName(other), "");
    EXPECT_TRUE(capture_.logEnabled(other));
}

TEST_F(CustomOptionsTest, CanBeSetAgainAndTakenBack) {
    capture_.setCustomName(view_, "Buy");
    capture_.setCustomName(view_, "");
    EXPECT_EQ(capture_.customName(view_), "");
    capture_.setCustomName(view_, "Sell");
    capture_.setCustomName(view_, std::nullopt);
    EXPECT_EQ(capture_.customName(view_), "");
    capture_.setLogEnabled(view_, false);
    capture_.setLogEnabled(view_, true);
    EXPECT_TRUE(capture_.logEnabled(view_));
}

TEST_F(CustomOptionsTest, AValueOfAnotherTypeReadsAsTheDefault) {
    host_.runtime.objc_setAssociatedObject(view_, CustomOptions::customNameKey(), true);
    host_.runtime.objc_setAssociatedObject(view_, CustomOptions::logEnabledKey(), std::string("NO"));
    EXPECT_EQ(capture_.customName(view_), "");
    EXPECT_TRUE(capture_.logEnabled(view_));
}

TEST_F(CustomOptionsTest, EachPropertyHasOneKeyForAllClasses) {
    EXPECT_NE(CustomOptions::customNameKey(), CustomOptions::logEnabledKey());
    for (const auto* className : {"UIView", "UIViewController", "UIBarItem", "UIGestureRecognizer"}) {
        const auto object = host_.make(className);
        capture_.setCustomName(object, className);
        EXPECT_EQ(host_.runtime.objc_getAssociatedObject(object, CustomOptions::customNameKey()),
                  AssociatedValue(std::string(className)));
    }
}

TEST_F(CustomOptionsTest, AreReachableUnderTheirSelectors) {
    capture_.prepare();
    const auto item = host_.make("UIBarButtonItem");
    EXPECT_EQ(std::get<std::string>(host_.send(item, "customName")), "");
    EXPECT_TRUE(std::get<bool>(host_.send(item, "logEnabled")));
    host_.name(item, "Done");
    host_.disable(item);
    EXPECT_EQ(std::get<std::string>(host_.send(item, "customName")), "Done");
    EXPECT_FALSE(std::get<bool>(host_.send(item, "logEnabled")));
}

} // namespace
} // namespace tallyfoot::testing
