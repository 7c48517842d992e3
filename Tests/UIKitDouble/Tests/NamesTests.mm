#import <UIKit/UIKit.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

struct Ancestry {
    const char* name;
    const char* ancestor;
};

void PrintTo(const Ancestry& ancestry, std::ostream* stream) { *stream << ancestry.ancestor; }

class Names : public ::testing::TestWithParam<Ancestry> {};

TEST_P(Names, HasItsAncestor) {
    @autoreleasepool {
        Class named = NSClassFromString([NSString stringWithUTF8String:GetParam().name]);
        Class ancestor = NSClassFromString([NSString stringWithUTF8String:GetParam().ancestor]);
        ASSERT_NE(named, nil);
        ASSERT_NE(ancestor, nil);
        EXPECT_TRUE([named isSubclassOfClass:ancestor]);
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, Names,
    ::testing::Values(
        Ancestry{"UIView", "UIResponder"}, Ancestry{"UIViewController", "UIResponder"},
        Ancestry{"UIApplication", "UIResponder"}, Ancestry{"UIControl", "UIView"}, Ancestry{"UIButton", "UIControl"},
        Ancestry{"UISwitch", "UIControl"}, Ancestry{"UISlider", "UIControl"}, Ancestry{"UITextField", "UIControl"},
        Ancestry{"UIRefreshControl", "UIControl"}, Ancestry{"UIDatePicker", "UIControl"},
        Ancestry{"UITableView", "UIScrollView"}, Ancestry{"UICollectionView", "UIScrollView"},
        Ancestry{"UITextView", "UIScrollView"}, Ancestry{"UIPickerTableView", "UITableView"},
        Ancestry{"UIScrollViewPanGestureRecognizer", "UIPanGestureRecognizer"},
        Ancestry{"UITextTapRecognizer", "UITapGestureRecognizer"}, Ancestry{"UISwipeActionStandardButton", "UIButton"},
        Ancestry{"UITabBarItem", "UIBarItem"}, Ancestry{"UIBarButtonItem", "UIBarItem"},
        Ancestry{"UIAlertController", "UIViewController"}, Ancestry{"UISearchController", "UIViewController"},
        Ancestry{"UINavigationController", "UIViewController"},
        Ancestry{"UIPickerTableViewWrapperCell", "UITableViewCell"}, Ancestry{"UISearchBarTextField", "UITextField"},
        Ancestry{"UIWebBrowserView", "UIView"}, Ancestry{"UIPageViewController", "UIViewController"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(Ancestry, ASearchBarIsNoControl) {
    EXPECT_FALSE([[UISearchBar class] isSubclassOfClass:[UIControl class]]);
    EXPECT_FALSE([[UIBarItem class] isSubclassOfClass:[UIResponder class]]);
    EXPECT_FALSE([[UIPickerView class] isSubclassOfClass:[UIControl class]]);
}

} // namespace
