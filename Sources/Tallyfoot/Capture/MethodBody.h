#pragma once

#include "Tallyfoot/Capture/References.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace tallyfoot {

// The methods that the library brings: what the binding implements, each by calling the operation of
// `Capture` that stands in the last column. They are added to the classes named here.
enum class MethodBody {
    customName,              // UIView, UIViewController, UIBarItem, UIGestureRecognizer: Capture::customName
    setCustomName,           //   "   Capture::setCustomName
    logEnabled,              //   "   Capture::logEnabled
    setLogEnabled,           //   "   Capture::setLogEnabled
    initWithTarget,          // UIGestureRecognizer: Capture::swizzle_initWithTarget
    gestureAction,           // UIGestureRecognizer: Capture::swizzleGestureAction
    sendAction,              // UIApplication: Capture::swizzledSendAction
    viewWillAppear,          // UIViewController: Capture::swizzledViewWillAppear
    viewWillDisappear,       // UIViewController: Capture::swizzledViewWillDisappear
    scrollViewDelegate,      // UIScrollView: Capture::swizzledSetter with this value, and the next five
    tableViewDelegate,       // UITableView
    tabBarDelegate,          // UITabBar
    collectionViewSource,    // UICollectionView
    searchBarDelegate,       // UISearchBar
    searchControllerUpdater, // UISearchController
    tableViewSelection,      // NSObject: Capture::swizzledCallback with this value, and all that follow
    collectionViewSelection,
    tabBarSelection,
    searchBarSearch,
    searchBarBookmark,
    searchBarCancel,
    searchBarResultsList,
    searchResultsUpdate,
    endOfDeceleration
};

// Under which selector each of them stands.
inline constexpr std::array<std::string_view, 24> methodBodySelectors{"customName",
                                                                      "setCustomName:",
                                                                      "logEnabled",
                                                                      "setLogEnabled:",
                                                                      "swizzle_initWithTarget:action:",
                                                                      "swizzleGestureAction:",
                                                                      "swizzledSendAction:to:from:for:",
                                                                      "swizzledViewWillAppear:",
                                                                      "swizzledViewWillDisappear:",
                                                                      "setDelegateSwizzled:",
                                                                      "setDelegateSwizzled_:",
                                                                      "setDelegateSwizzled:",
                                                                      "setDataSourceSwizzled:",
                                                                      "setDelegateSwizzled:",
                                                                      "searchResultsUpdaterSwizzled:",
                                                                      "swizzled_TableView:didSelectRowAt:",
                                                                      "swizzled_collectionView:didSelectItemAt:",
                                                                      "swizzled_tabBar:didSelect:",
                                                                      "swizzled_searchBarSearchButtonClicked:",
                                                                      "swizzled_searchBarBookmarkButtonClicked:",
                                                                      "swizzled_searchBarCancelButtonClicked:",
                                                                      "swizzled_searchBarResultsListButtonClicked:",
                                                                      "swizzled_updateSearchResultsFor:",
                                                                      "swizzled_scrollViewDidEndDecelerating:"};

constexpr const char* selectorName(MethodBody body) noexcept {
    return methodBodySelectors[static_cast<std::size_t>(body)].data(); // a literal: ends in NUL
}

// The binding's code for them.
class MethodBodies {
public:
    struct Code {
        ImplementationRef implementation;
        const char* types = ""; // as the platform encodes the body's true signature
    };

    virtual ~MethodBodies() = default;
    virtual Code code(MethodBody body) = 0;
};

} // namespace tallyfoot
