#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace tallyfoot {

// What is never captured, by exact name.
struct IgnoreLists {
    static constexpr std::array<std::string_view, 20> screenControllers{
        "UISplitViewController",
        "UIAlertController",
        "UINavigationController",
        "UIInputWindowController",
        "UICompatibilityInputViewController",
        "UIPageViewController",
        "_UIAlertShimPresentingViewController",
        "UIKeyboardCandidateGridCollectionViewController",
        "UIApplicationRotationFollowingControllerNoTouches",
        "_UIActivityGroupListViewController",
        "_UIDocumentActivityViewController",
        "_UIRemoteInputViewController",
        "MFMailComposeInternalViewController",
        "MFMailComposeRemoteViewController",
        "MFMailComposePlaceholderViewController",
        "_UIAlertControllerTextFieldViewController",
        "_UIShareExtensionRemoteViewController",
        "UIActivityViewController",
        "UISearchController",
        "UISearchDisplayController"};

    static constexpr std::array<std::string_view, 10> gestures{"UIScrollViewPanGestureRecognizer",
                                                               "UITextTapRecognizer",
                                                               "_UISwitchInternalView",
                                                               "UISearchBarTextField",
                                                               "UISearchBar",
                                                               "UISwitchModernVisualElement",
                                                               "UIPickerTableViewWrapperCell",
                                                               "UISwitch",
                                                               "UIWebTouchEventsGestureRecognizer",
                                                               "_UISwitchInternalViewNeueStyle1"};

    static constexpr std::array<std::string_view, 6> collectionCells{
        "UIKeyboardCandidateBarCell",       "UIKeyboardCandidateGridCell",          "UIKeyboardEmojiCollectionViewCell",
        "UIKBHandwritingCandidateViewCell", "_UIAlertControllerCollectionViewCell", "_UIActivityGroupActivityCell"};

    // Selectors: the search bar's delegate tells of these taps.
    static constexpr std::array<std::string_view, 3> searchBarActions{"_resultsListButtonPressed",
                                                                      "_clearButtonClicked:", "_cancelButtonPressed"};

    static constexpr std::string_view pickerTableView = "UIPickerTableView";
    static constexpr std::string_view webViewScrollView = "_UIWebViewScrollView";
    static constexpr std::string_view webBrowserView = "UIWebBrowserView"; // and its subclasses

    template <std::size_t Size>
    static constexpr bool contains(const std::array<std::string_view, Size>& list, std::string_view name) noexcept {
        return std::find(list.begin(), list.end(), name) != list.end();
    }
};

// What the call stack tells about an action, by a part of a symbol's text.
struct CallStackMarkers {
    static constexpr std::string_view touchUp = "UIControl touchesEnded";
    static constexpr std::string_view sliderTracking = "UISlider continueTrackingWithTouch";
};

} // namespace tallyfoot
