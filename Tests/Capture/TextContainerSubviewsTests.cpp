#include "Capture/CaptureHost.h"

#include "Tallyfoot/Capture/TextContainer.h"
#include "Tallyfoot/Capture/TextContainerSubviews.h"

#include <gtest/gtest.h>

namespace tallyfoot::testing {
namespace {

class TextContainerSubviewsTest : public ::testing::Test {
protected:
    std::string text(ObjectRef view) { return TextContainerSubviews(host_.object(view)).text(); }
    ObjectRef view(std::vector<ObjectRef> subviews) { return host_.makeView("UIView", std::move(subviews)); }
    ObjectRef label(const char* text) { return host_.makeLabel(text); }

    // A view that counts how often it is asked for its subviews.
    ObjectRef counting(std::function<MemoryRuntime::Value()> subviews) {
        const auto made = host_.make("UIView");
        host_.runtime.answerWith(made, "subviews", [this, subviews](const auto&) {
            ++looks_;
            return subviews();
        });
        return made;
    }

    CaptureHost host_;
    int looks_ = 0;
};

TEST_F(TextContainerSubviewsTest, ALabelAndATextFieldBearTheirText) {
    EXPECT_EQ(text(label("Add")), "Add");
    EXPECT_EQ(text(host_.make("UITextField", {{"text", std::string("typed")}})), "typed");
}

TEST_F(TextContainerSubviewsTest, OtherViewsBearNone) {
    EXPECT_EQ(text(host_.make("UIView", {{"text", std::string("no label")}})), "");
    EXPECT_EQ(text(host_.make("UITextView", {{"text", std::string("long")}})), "");
    EXPECT_EQ(text({}), "");
}

TEST_F(TextContainerSubviewsTest, TheFirstTextDepthFirstWins) {
    EXPECT_EQ(text(view({view({view({}), view({label("deep")})}), label("near")})), "deep");
}

TEST_F(TextContainerSubviewsTest, EmptyTextsArePassedOver) {
    EXPECT_EQ(text(view({label(""), host_.make("UILabel"), label("second")})), "second");
    EXPECT_EQ(text(view({label(" "), label("second")})), " ");
}

TEST_F(TextContainerSubviewsTest, AnEmptyLabelIsSearchedFurther) {
    const auto outer = host_.makeView("UILabel", {label("inside")});
    EXPECT_EQ(text(outer), "inside");
}

TEST_F(TextContainerSubviewsTest, WhatASecureFieldHoldsIsNeverRead) {
    const auto password = host_.make("UITextField", {{"text", std::string("secret")}, {"isSecureTextEntry", true}});
    EXPECT_EQ(text(view({password})), "");
    EXPECT_EQ(text(view({password, label("Password")})), "Password");
    host_.runtime.answer(password, "subviews", host_.runtime.makeArray({label("secret")}));
    EXPECT_EQ(text(view({password})), "") << "nor what it shows that in";
}

TEST_F(TextContainerSubviewsTest, AHostMayTakeTheSubviewsAwayWhileTheyAreLookedAt) {
    const auto eager = host_.makeView("UILabel", {});
    const auto subviews = host_.runtime.makeArray({eager, label("last")});
    const auto outer = host_.make("UIView", {{"subviews", subviews}});
    host_.runtime.answerWith(eager, "text", [&](const auto&) -> MemoryRuntime::Value {
        host_.runtime.objc_release(subviews);
        host_.runtime.objc_release(eager);
        return {};
    });
    EXPECT_EQ(text(outer), "last");
    EXPECT_FALSE(host_.runtime.isAlive(subviews)) << "and nothing keeps them";
    EXPECT_FALSE(host_.runtime.isAlive(eager));
}

TEST_F(TextContainerSubviewsTest, ACircleEnds) {
    ObjectRef circle;
    circle = counting([&] { return host_.runtime.makeArray({circle, circle}); });
    EXPECT_EQ(text(circle), "");
    EXPECT_LE(looks_, TextContainerSubviews::mostViews);
}

TEST_F(TextContainerSubviewsTest, AWideViewIsGivenUp) {
    std::vector<ObjectRef> subviews(100'000, view({}));
    subviews.back() = label("too far");
    EXPECT_EQ(text(view(subviews)), "");
    subviews[TextContainerSubviews::mostViews - 2] = label("just within"); // the view itself counts
    EXPECT_EQ(text(view(subviews)), "just within");
}

TEST_F(TextContainerSubviewsTest, ADeepViewIsGivenUp) {
    const auto nested = [&](int depth) {
        auto inner = label("bottom");
        for (int level = 0; level < depth; ++level) inner = view({inner});
        return inner;
    };
    EXPECT_EQ(text(nested(TextContainerSubviews::mostDepth)), "bottom");
    EXPECT_EQ(text(nested(TextContainerSubviews::mostDepth + 1)), "");
    EXPECT_EQ(text(view({nested(TextContainerSubviews::mostDepth), label("beside")})), "beside");
}

TEST_F(TextContainerSubviewsTest, ACellsTextLabelComesFirst) {
    const auto cell = host_.makeView("UITableViewCell", {label("subview")});
    EXPECT_EQ(TextContainerSubviews(host_.object(cell)).cellText(), "subview");
    host_.runtime.answer(cell, "textLabel", label(""));
    EXPECT_EQ(TextContainerSubviews(host_.object(cell)).cellText(), "subview");
    host_.runtime.answer(cell, "textLabel", label("title"));
    EXPECT_EQ(TextContainerSubviews(host_.object(cell)).cellText(), "title");
}

TEST_F(TextContainerSubviewsTest, SubviewsThatAreNoArrayAreNone) {
    EXPECT_EQ(text(host_.make("UIView", {{"subviews", host_.make("NSObject")}})), "");
    EXPECT_EQ(text(host_.make("UIView", {{"subviews", std::string("x")}})), "");
}

} // namespace
} // namespace tallyfoot::testing
