#pragma once
#import "UITabBar.h"
#import "UIViewController.h"

@interface UITabBarController : UIViewController <UITabBarDelegate> {
    UITabBar* _tabBar;
    NSUInteger _selectedIndex;
}
@property(nonatomic, readonly) UITabBar* tabBar;
@property(nonatomic, copy) NSArray* viewControllers;
@property(nonatomic) NSUInteger selectedIndex;
@property(nonatomic, readonly) UIViewController* selectedViewController;
@end
