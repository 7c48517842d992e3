#include "Tallyfoot/Capture/IgnoreLists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyfoot {
namespace {

using ::testing::UnorderedElementsAre;

TEST(IgnoreLists, HoldTheStatedScreenControllers) {
    EXPECT_THAT(
        IgnoreLists::screenControllers,
        UnorderedElementsAre("UISplitViewController", "UIAlertController", "UINavigationController",
                             "UIInputWindowController", "UICompatibilityInputViewController", "UIPageViewController",
                             "_UIAlertShimPresentingViewController", "UIKeyboardCandidateGridCollectionViewController",
                             "UIApplicationRotationFollowingControllerNoTouches", "_UIActivityGroupListViewController",
                             "_UIDocumentActivityViewController", "_UIRemoteInputViewController",
                             "MFMailComposeInternalViewController", "MFMailComposeRemoteViewController",
                             "MFMailComposePlaceholderViewController", "_UIAlertControllerTextFieldViewController",
                             "_UIShareExtensionRemoteViewController", "UIActivityViewController", "UISearchController",
                             "UISearchDisplayController"));
}

TEST(IgnoreLists, HoldTheStatedGesturesAndViews) {
    EXPECT_THAT(IgnoreLists::gestures,
                UnorderedElementsAre("UIScrollViewPanGestureRecognizer", "UITextTapRecognizer", "_UISwitchInternalView",
                                     "UISearchBarTextField", "UISearchBar", "UISwitchModernVisualElement",
                                     "UIPickerTableViewWrapperCell", "UISwitch", "UIWebTouchEventsGestureRecognizer",
                                     "_UISwitchInternalViewNeueStyle1"));
}

TEST(IgnoreLists, HoldTheStatedCollectionCells) {
    EXPECT_THAT(IgnoreLists::collectionCells,
                UnorderedElementsAre("UIKeyboardCandidateBarCell", "UIKeyboardCandidateGridCell",
                                     "UIKeyboardEmojiCollectionViewCell", "UIKBHandwritingCandidateViewCell",
                                     "_UIAlertControllerCollectionViewCell", "_UIActivityGroupActivityCell"));
}

TEST(IgnoreLists, HoldTheStatedSearchBarActionsAndSingleNames) {
    EXPECT_THAT(IgnoreLists::searchBarActions,
                UnorderedElementsAre("_resultsListButtonPressed", "_clearButtonClicked:", "_cancelButtonPressed"));
    EXPECT_EQ(IgnoreLists::pickerTableView, "UIPickerTableView");
    EXPECT_EQ(IgnoreLists::webViewScrollView, "_UIWebViewScrollView");
    EXPECT_EQ(IgnoreLists::webBrowserView, "UIWebBrowserView");
    EXPECT_EQ(CallStackMarkers::touchUp, "UIControl touchesEnded");
    EXPECT_EQ(CallStackMarkers::sliderTracking, "UISlider continueTrackingWithTouch");
}

TEST(IgnoreLists, MatchExactly) {
    EXPECT_TRUE(IgnoreLists::contains(IgnoreLists::gestures, "UISwitch"));
    EXPECT_FALSE(IgnoreLists::contains(IgnoreLists::gestures, "UISwitchy"));
    EXPECT_FALSE(IgnoreLists::contains(IgnoreLists::gestures, "uiswitch"));
    EXPECT_FALSE(IgnoreLists::contains(IgnoreLists::gestures, ""));
}

} // namespace
} // namespace tallyfoot
