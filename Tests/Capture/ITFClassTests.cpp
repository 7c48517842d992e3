#include "Tallyfoot/Capture/ITFClass.h"

#include <gtest/gtest.h>

#include <unordered_map>

namespace tallyfoot {
namespace {

TEST(ITFClass, HasTheStatedCasesInTheirOrder) {
    const std::pair<ITFClass, std::string_view> cases[] = {
        {ITFClass::tableviewSwipeAction, "UISwipeActionStandardButton"},
        {ITFClass::barButton, "UIBarButtonItem"},
        {ITFClass::button, "UIButton"},
        {ITFClass::segmentControl, "UISegmentedControl"},
        {ITFClass::stepper, "UIStepper"},
        {ITFClass::slider, "UISlider"},
        {ITFClass::switch_, "UISwitch"},
        {ITFClass::datePicker, "UIDatePicker"},
        {ITFClass::pageControl, "UIPageControl"},
        {ITFClass::refreshControl, "UIRefreshControl"},
        {ITFClass::alert, "UIAlertController"},
        {ITFClass::tapGesture, "UITapGestureRecognizer"},
        {ITFClass::swipeGesture, "UISwipeGestureRecognizer"},
        {ITFClass::pinchGesture, "UIPinchGestureRecognizer"},
        {ITFClass::longPressGesture, "UILongPressGestureRecognizer"},
        {ITFClass::panGesture, "UIPanGestureRecognizer"},
        {ITFClass::tableView, "UITableView"},
        {ITFClass::scrollView, "UIScrollView"},
        {ITFClass::collectionView, "UICollectionView"},
        {ITFClass::tabBar, "UITabBar"},
        {ITFClass::searchBar, "UISearchBar"},
        {ITFClass::viewController, "UIViewController"},
    };
    ASSERT_EQ(std::size(cases), itfClassTexts.size());
    int ordinal = 0;
    for (const auto& [itfClass, text] : cases) {
        EXPECT_EQ(static_cast<int>(itfClass), ordinal++) << text;
        EXPECT_EQ(rawValue(itfClass), text);
        EXPECT_EQ(fromRawValue<ITFClass>(text), itfClass);
    }
}

TEST(ITFClass, IsFoundByTheExactClassNameOnly) {
    EXPECT_EQ(fromRawValue<ITFClass>("UIButton"), ITFClass::button);
    EXPECT_EQ(fromRawValue<ITFClass>("uibutton"), std::nullopt);
    EXPECT_EQ(fromRawValue<ITFClass>("Button"), std::nullopt);
    EXPECT_EQ(fromRawValue<ITFClass>("button"), std::nullopt);
    EXPECT_EQ(fromRawValue<ITFClass>(" UIButton"), std::nullopt);
    EXPECT_EQ(fromRawValue<ITFClass>("UIButton "), std::nullopt);
    EXPECT_EQ(fromRawValue<ITFClass>(""), std::nullopt);
}

TEST(ITFClass, CategoryIsTheClassNameWithoutACustomTitle) {
    EXPECT_EQ(category(ITFClass::tabBar, {}), "UITabBar");
    EXPECT_EQ(category(ITFClass::viewController, {}), "UIViewController");
}

TEST(ITFClass, CategoryIsTheCustomTitleWhereThereIsOne) {
    const CategoryTitles titles{{ITFClass::tabBar, "Tabs"}, {ITFClass::viewController, ""}};
    EXPECT_EQ(category(ITFClass::tabBar, titles), "Tabs");
    EXPECT_EQ(category(ITFClass::viewController, titles), "") << "an empty title is a title";
    EXPECT_EQ(category(ITFClass::button, titles), "UIButton");
}

TEST(ITFClass, KeysAHashTable) {
    std::unordered_map<ITFClass, int> counts;
    counts[ITFClass::tabBar] = 1;
    counts[fromRawValue<ITFClass>("UITabBar").value()] += 1;
    EXPECT_EQ(counts, (std::unordered_map<ITFClass, int>{{ITFClass::tabBar, 2}}));
}

} // namespace
} // namespace tallyfoot
