#import "Probe.h"

#include <gtest/gtest.h>

namespace {

class Bars : public ::testing::Test {
protected:
    ~Bars() override { [pool release]; }

    UIView* part(UIView* bar, const char* className, NSUInteger index = 0) {
        for (UIView* view in bar.subviews) {
            if ([NSStringFromClass([view class]) isEqualToString:[NSString stringWithUTF8String:className]]
                && index-- == 0) {
                return view;
            }
        }
        return nil;
    }

    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    Probe* probe = [Probe probe];
};

TEST_F(Bars, ASystemItemsDescriptionEndsInItsName) {
    UIBarButtonItem* item = [[[UIBarButtonItem alloc] initWithBarButtonSystemItem:UIBarButtonSystemItemDone
                                                                           target:nil
                                                                           action:NULL] autorelease];
    EXPECT_TRUE([[item description] hasSuffix:@"systemItem=Done"]);
    EXPECT_EQ(item.title, nil);
}

TEST_F(Bars, AnotherItemsDescriptionCarriesItsTitleOrImage) {
    UIBarButtonItem* item = [[[UIBarButtonItem alloc] initWithTitle:@"Pay"
                                                              style:UIBarButtonItemStylePlain
                                                             target:nil
                                                             action:NULL] autorelease];
    EXPECT_TRUE([[item description] hasSuffix:@"title='Pay'"]);
    UIBarButtonItem* image = [[[UIBarButtonItem alloc] initWithImage:@"cart"
                                                               style:UIBarButtonItemStylePlain
                                                              target:nil
                                                              action:NULL] autorelease];
    EXPECT_TRUE([[image description] hasSuffix:@"image=cart"]);
}

TEST_F(Bars, ABarItemsActionComesFromTheItem) {
    UIViewController* page = [[[UIViewController alloc] init] autorelease];
    page.navigationItem.rightBarButtonItem = [[[UIBarButtonItem alloc] initWithTitle:@"Pay"
                                                                               style:UIBarButtonItemStylePlain
                                                                              target:probe
                                                                              action:@selector(action:)] autorelease];
    UINavigationController* stack = [[[UINavigationController alloc] initWithRootViewController:page] autorelease];
    [stack view];
    [Finger tap:[stack.navigationBar.subviews lastObject]];
    EXPECT_EQ(heardBy(probe), "action from UIBarButtonItem");
}

TEST_F(Bars, ATabBarTellsItsDelegate) {
    UITabBar* bar = [[[UITabBar alloc] initWithFrame:CGRectMake(0, 0, 320, 49)] autorelease];
    bar.items = @[
        [[[UITabBarItem alloc] initWithTitle:@"Shop" image:nil tag:0] autorelease],
        [[[UITabBarItem alloc] initWithTitle:@"Basket" image:nil tag:1] autorelease]
    ];
    bar.delegate = probe;
    [Finger tap:bar at:CGPointMake(300, 20)];
    EXPECT_EQ(heardBy(probe), "tab Basket");
    bar.selectedItem = [bar.items firstObject]; // in code: nothing is told
    EXPECT_EQ(heardBy(probe), "");
}

TEST_F(Bars, ASearchBarsButtonsTellItsDelegate) {
    UISearchBar* bar = [[[UISearchBar alloc] initWithFrame:CGRectZero] autorelease];
    bar.delegate = probe;
    bar.showsCancelButton = bar.showsBookmarkButton = bar.showsSearchResultsButton = YES;
    [Finger tap:part(bar, "UISearchBarBookmarkView")];
    EXPECT_EQ(heardBy(probe), "bookmark");
    [Finger tap:part(bar, "UIButton", 1)];
    EXPECT_EQ(heardBy(probe), "results list");
    [Finger tap:part(bar, "UINavigationButton")];
    EXPECT_EQ(heardBy(probe), "cancel");
    [bar.searchTextField insertText:@"tea"];
    EXPECT_EQ(heardBy(probe), "text 'tea'");
    [bar.searchTextField insertText:@"\n"];
    EXPECT_EQ(heardBy(probe), "search");
    [Finger tap:part(bar, "UIButton", 0)]; // clear
    EXPECT_EQ(heardBy(probe), "text ''");
}

} // namespace
