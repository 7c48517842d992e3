#pragma once

#include "Tallyfoot/Events/RawValue.h"

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace tallyfoot {

// The platform classes whose interactions are captured. The text is the class's name.
enum class ITFClass {
    tableviewSwipeAction,
    barButton,
    button,
    segmentControl,
    stepper,
    slider,
    switch_,
    datePicker,
    pageControl,
    refreshControl,
    alert,
    tapGesture,
    swipeGesture,
    pinchGesture,
    longPressGesture,
    panGesture,
    tableView,
    scrollView,
    collectionView,
    tabBar,
    searchBar,
    viewController
};

inline constexpr std::array<std::string_view, 22> itfClassTexts{"UISwipeActionStandardButton",
                                                                "UIBarButtonItem",
                                                                "UIButton",
                                                                "UISegmentedControl",
                                                                "UIStepper",
                                                                "UISlider",
                                                                "UISwitch",
                                                                "UIDatePicker",
                                                                "UIPageControl",
                                                                "UIRefreshControl",
                                                                "UIAlertController",
                                                                "UITapGestureRecognizer",
                                                                "UISwipeGestureRecognizer",
                                                                "UIPinchGestureRecognizer",
                                                                "UILongPressGestureRecognizer",
                                                                "UIPanGestureRecognizer",
                                                                "UITableView",
                                                                "UIScrollView",
                                                                "UICollectionView",
                                                                "UITabBar",
                                                                "UISearchBar",
                                                                "UIViewController"};
constexpr const auto& rawValueTable(ITFClass) noexcept { return itfClassTexts; }

constexpr std::string_view rawValue(ITFClass itfClass) noexcept {
    return itfClassTexts[static_cast<std::size_t>(itfClass)];
}

using CategoryTitles = std::map<ITFClass, std::string>;

// The text under "evtCategory": the custom title where there is one, else the class's name.
inline std::string category(ITFClass itfClass, const CategoryTitles& customTitles) {
    const auto title = customTitles.find(itfClass);
    return title == customTitles.end() ? std::string(rawValue(itfClass)) : title->second;
}

static_assert(fromRawValue<ITFClass>("UIButton") == ITFClass::button);
static_assert(!fromRawValue<ITFClass>("uibutton") && !fromRawValue<ITFClass>("Button"));

} // namespace tallyfoot
