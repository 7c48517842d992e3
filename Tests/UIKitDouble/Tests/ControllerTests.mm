#import "Probe.h"

#include <gtest/gtest.h>

// Writes down when it appears and disappears.
@interface Page : UIViewController {
@public
    NSMutableArray* heard;
}
@end

@implementation Page
- (void)viewDidLoad {
    [super viewDidLoad];
    [heard addObject:[self.title stringByAppendingString:@" loaded"]];
}
- (void)viewWillAppear:(BOOL)animated {
    [super viewWillAppear:animated];
    [heard addObject:[@"+" stringByAppendingString:self.title]];
}
- (void)viewWillDisappear:(BOOL)animated {
    [super viewWillDisappear:animated];
    [heard addObject:[@"-" stringByAppendingString:self.title]];
}
@end

namespace {

class Controllers : public ::testing::Test {
protected:
    ~Controllers() override {
        [pool release];
        [probe release];
    }

    Page* page(NSString* title) {
        Page* made = [[[Page alloc] init] autorelease];
        made.title = title;
        made->heard = probe->heard;
        return made;
    }

    void show(UIViewController* root) {
        window.rootViewController = root;
        [window makeKeyAndVisible];
    }

    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    Probe* probe = [[Probe probe] retain]; // the window goes first
    UIWindow* window = [[[UIWindow alloc] initWithFrame:CGRectMake(0, 0, 320, 568)] autorelease];
};

TEST_F(Controllers, TheRootAppearsWithItsWindow) {
    Page* root = page(@"A");
    window.rootViewController = root;
    EXPECT_EQ(heardBy(probe), "");
    [window makeKeyAndVisible];
    EXPECT_EQ(heardBy(probe), "A loaded, +A");
    window.rootViewController = page(@"B");
    EXPECT_EQ(heardBy(probe), "-A, B loaded, +B");
}

TEST_F(Controllers, PushingAndPoppingSwapsTheTop) {
    UINavigationController* stack =
        [[[UINavigationController alloc] initWithRootViewController:page(@"A")] autorelease];
    show(stack);
    EXPECT_EQ(heardBy(probe), "A loaded, +A");
    [stack pushViewController:page(@"B") animated:YES];
    EXPECT_EQ(heardBy(probe), "-A, B loaded, +B");
    EXPECT_EQ([stack.viewControllers count], 2U);
    [Finger tap:[stack.navigationBar.subviews firstObject]]; // back
    EXPECT_EQ(heardBy(probe), "-B, +A");
    EXPECT_EQ([stack popViewControllerAnimated:YES], nil);
    EXPECT_EQ(heardBy(probe), "");
}

TEST_F(Controllers, OnlyTheSelectedTabIsShown) {
    UITabBarController* tabs = [[[UITabBarController alloc] init] autorelease];
    UINavigationController* second =
        [[[UINavigationController alloc] initWithRootViewController:page(@"B")] autorelease];
    tabs.viewControllers = @[ page(@"A"), second ];
    show(tabs);
    EXPECT_EQ(heardBy(probe), "A loaded, +A");
    [Finger tap:[tabs.tabBar.subviews lastObject]];
    EXPECT_EQ(heardBy(probe), "-A, B loaded, +B");
    EXPECT_EQ(tabs.selectedIndex, 1U);
    [second pushViewController:page(@"C") animated:NO];
    EXPECT_EQ(heardBy(probe), "-B, C loaded, +C");
    [Finger tap:[tabs.tabBar.subviews lastObject]]; // back to its root
    EXPECT_EQ(heardBy(probe), "-C, +B");
    EXPECT_EQ(second.tabBarController, tabs);
    EXPECT_EQ([second.topViewController navigationController], second);
}

TEST_F(Controllers, AFullScreenCoversAndASheetDoesNot) {
    Page* root = page(@"A");
    show(root);
    heardBy(probe);
    Page* sheet = page(@"B");
    [root presentViewController:sheet animated:YES completion:NULL];
    EXPECT_EQ(heardBy(probe), "B loaded, +B");
    EXPECT_EQ(root.presentedViewController, sheet);
    [sheet dismissViewControllerAnimated:YES completion:NULL];
    EXPECT_EQ(heardBy(probe), "-B");
    Page* full = page(@"C");
    full.modalPresentationStyle = UIModalPresentationFullScreen;
    [root presentViewController:full animated:YES completion:NULL];
    EXPECT_EQ(heardBy(probe), "-A, C loaded, +C");
    [root dismissViewControllerAnimated:YES completion:NULL];
    EXPECT_EQ(heardBy(probe), "-C, +A");
}

TEST_F(Controllers, AppearanceReachesChildrenUnlessTheParentForwardsItItself) {
    Page* root = page(@"A");
    [root addChildViewController:page(@"B")];
    show(root);
    EXPECT_EQ(heardBy(probe), "A loaded, +A, B loaded, +B");
}

TEST_F(Controllers, AnAlertsActionRunsAfterItIsGone) {
    Page* root = page(@"A");
    show(root);
    heardBy(probe);
    Probe* told = probe;
    UIAlertController* alert = [UIAlertController alertControllerWithTitle:@"Sure?"
                                                                   message:nil
                                                            preferredStyle:UIAlertControllerStyleAlert];
    [alert addAction:[UIAlertAction actionWithTitle:@"No" style:UIAlertActionStyleCancel handler:NULL]];
    [alert addAction:[UIAlertAction actionWithTitle:@"Yes"
                                              style:UIAlertActionStyleDefault
                                            handler:^(UIAlertAction* action) {
                                              [told->heard addObject:action.title];
                                              [told->heard addObject:root.presentedViewController ? @"there" : @"gone"];
                                            }]];
    [root presentViewController:alert animated:YES completion:NULL];
    UIView* group = [alert.view.subviews lastObject];
    EXPECT_TRUE([NSStringFromClass([group class]) isEqualToString:@"_UIAlertControllerInterfaceActionGroupView"]);
    [Finger tap:group at:CGPointMake(100, 60)];
    EXPECT_EQ(heardBy(probe), "Yes, gone");
}

TEST_F(Controllers, ASheetsCancelActionStandsByItself) {
    UIAlertController* sheet = [UIAlertController alertControllerWithTitle:nil
                                                                   message:nil
                                                            preferredStyle:UIAlertControllerStyleActionSheet];
    [sheet addAction:[UIAlertAction actionWithTitle:@"Share" style:UIAlertActionStyleDefault handler:NULL]];
    [sheet addAction:[UIAlertAction actionWithTitle:@"Cancel" style:UIAlertActionStyleCancel handler:NULL]];
    UIView* last = [sheet.view.subviews lastObject];
    EXPECT_TRUE([NSStringFromClass([last class]) isEqualToString:@"UIActionSheetiOSDismissActionView"]);
}

TEST_F(Controllers, ASearchIsActiveFromTheFirstTouchToCancel) {
    UISearchController* search = [[[UISearchController alloc] initWithSearchResultsController:nil] autorelease];
    search.searchResultsUpdater = probe;
    [Finger tap:search.searchBar.searchTextField];
    EXPECT_TRUE(search.active);
    EXPECT_EQ(heardBy(probe), "update ''");
    [search.searchBar.searchTextField insertText:@"tea"];
    EXPECT_EQ(heardBy(probe), "update 'tea'");
    ASSERT_TRUE(search.searchBar.showsCancelButton);
    [Finger tap:[search.searchBar.subviews lastObject]];
    EXPECT_EQ(heardBy(probe), "update '' inactive");
    EXPECT_FALSE([search.searchBar.searchTextField isFirstResponder]);
}

} // namespace
