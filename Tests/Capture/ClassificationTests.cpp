#include "Capture/CaptureHost.h"

#include "Tallyfoot/Capture/Classification.h"

#include <gtest/gtest.h>

namespace tallyfoot::testing {
namespace {

class ClassificationTest : public ::testing::Test {
protected:
    std::optional<ITFClass> of(const char* className) { return classify(host_.object(host_.make(className))); }

    CaptureHost host_;
};

TEST_F(ClassificationTest, EachCapturedClassIsFound) {
    for (std::size_t ordinal = 0; ordinal < itfClassTexts.size(); ++ordinal) {
        const auto itfClass = static_cast<ITFClass>(ordinal);
        if (itfClass == ITFClass::collectionView) continue;
        EXPECT_EQ(of(itfClassTexts[ordinal].data()), itfClass) << itfClassTexts[ordinal];
    }
}

TEST_F(ClassificationTest, SoIsEachSubclass) {
    for (std::size_t ordinal = 1; ordinal < itfClassTexts.size(); ++ordinal) {
        const auto itfClass = static_cast<ITFClass>(ordinal);
        if (itfClass == ITFClass::collectionView) continue;
        const auto name = "Host" + std::string(itfClassTexts[ordinal]);
        host_.addClass(name.c_str(), itfClassTexts[ordinal].data());
        EXPECT_EQ(of(name.c_str()), itfClass) << name;
    }
}

TEST_F(ClassificationTest, ACollectionViewIsAScrollView) {
    EXPECT_EQ(of("UICollectionView"), ITFClass::scrollView);
    EXPECT_EQ(of("UITextView"), ITFClass::scrollView);
    EXPECT_EQ(of("UITableView"), ITFClass::tableView);
}

TEST_F(ClassificationTest, ASwipeActionsButtonGoesByItsExactName) {
    EXPECT_EQ(of("UISwipeActionStandardButton"), ITFClass::tableviewSwipeAction);
    host_.addClass("HostSwipeButton", "UISwipeActionStandardButton");
    EXPECT_EQ(of("HostSwipeButton"), ITFClass::button);
    host_.addClass("Impostors.UISwipeActionStandardButton", "UIView");
    EXPECT_EQ(of("Impostors.UISwipeActionStandardButton"), ITFClass::tableviewSwipeAction);
}

TEST_F(ClassificationTest, AnAlertIsNoViewController) { EXPECT_EQ(of("UIAlertController"), ITFClass::alert); }

TEST_F(ClassificationTest, EverythingElseIsNothing) {
    for (const auto* className :
         {"NSObject", "UIView", "UIControl", "UITextField", "UILabel", "UIBarItem", "UITabBarItem",
          "UIGestureRecognizer", "UIRotationGestureRecognizer", "UIApplication"})
        EXPECT_EQ(of(className), std::nullopt) << className;
    EXPECT_EQ(classify(host_.object({})), std::nullopt);
}

TEST_F(ClassificationTest, AnObservedObjectKeepsItsClass) {
    const auto button = host_.make("UIButton");
    host_.runtime.observe(button);
    EXPECT_EQ(classify(host_.object(button)), ITFClass::button);
}

} // namespace
} // namespace tallyfoot::testing
