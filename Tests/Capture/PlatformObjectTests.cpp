#include "Capture/CaptureHost.h"

#include <gtest/gtest.h>

namespace tallyfoot::testing {
namespace {

TEST(PlatformObject, ANilOneHasNothing) {
    CaptureHost host;
    const auto nil = host.object({});
    EXPECT_FALSE(nil);
    EXPECT_EQ(nil.className(), "");
    EXPECT_FALSE(nil.isKindOf("NSObject"));
    EXPECT_EQ(nil.customName(), "");
    EXPECT_TRUE(nil.logEnabled());
    EXPECT_EQ(nil.text(Message::title), std::nullopt);
    EXPECT_FALSE(nil.truth(Message::isOn));
    EXPECT_FALSE(nil.object(Message::view).object(Message::superview));
    EXPECT_EQ(nil.objectIdentifier(), "0");
}

TEST(PlatformObject, ItsIdentifierIsItsAddressInDecimal) {
    CaptureHost host;
    const auto object = host.make("UIView");
    EXPECT_EQ(host.object(object).objectIdentifier(), std::to_string(reinterpret_cast<std::uintptr_t>(object.pointer)));
}

TEST(PlatformObject, ItsClassNameComesWithoutTheModule) {
    CaptureHost host;
    host.addClass("Shop.Basket.Button", "UIButton");
    EXPECT_EQ(host.object(host.make("Shop.Basket.Button")).className(), "Button");
    EXPECT_EQ(host.object(host.make("UIButton")).className(), "UIButton");
}

TEST(PlatformObject, IsOfItsClassAndOfThoseAboveIt) {
    CaptureHost host;
    const auto button = host.object(host.make("UIButton"));
    EXPECT_TRUE(button.isKindOf("UIButton"));
    EXPECT_TRUE(button.isKindOf("UIControl"));
    EXPECT_TRUE(button.isKindOf("NSObject"));
    EXPECT_FALSE(button.isKindOf("UISwitch"));
    EXPECT_FALSE(button.isKindOf("UI"));
    EXPECT_FALSE(button.isKindOf(""));
}

TEST(PlatformObject, TheClassThatObservingMakesIsHidden) {
    CaptureHost host;
    const auto button = host.make("UISwipeActionStandardButton");
    host.runtime.observe(button);
    EXPECT_EQ(host.object(button).className(), "UISwipeActionStandardButton");
    EXPECT_TRUE(host.object(button).isKindOf("UIButton"));
}

TEST(PlatformObject, APropertyOfAnotherTypeIsAbsent) {
    CaptureHost host;
    const auto object = host.object(host.make("UIView", {{"title", std::int64_t{7}}, {"isOn", std::string("yes")}}));
    EXPECT_EQ(object.text(Message::title), std::nullopt);
    EXPECT_FALSE(object.truth(Message::isOn));
    EXPECT_FALSE(object.object(Message::view));
}

TEST(PlatformObject, NothingIsFoundByNil) {
    CaptureHost host;
    const auto cell = host.make("UITableViewCell");
    const auto table = host.object(host.make("UITableView", {{"cellForRowAtIndexPath:", cell}}));
    EXPECT_TRUE(table.object(Message::cellForRowAtIndexPath, host.make("NSObject")));
    EXPECT_FALSE(table.object(Message::cellForRowAtIndexPath, ObjectRef{}));
}

} // namespace
} // namespace tallyfoot::testing
