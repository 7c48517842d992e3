#pragma once
#import "UINavigationBar.h"
#import "UIViewController.h"

@interface UINavigationController : UIViewController {
    UINavigationBar* _navigationBar;
}
@property(nonatomic, readonly) UINavigationBar* navigationBar;
@property(nonatomic, readonly) NSArray* viewControllers;
@property(nonatomic, readonly) UIViewController* topViewController;
- (instancetype)initWithRootViewController:(UIViewController*)root;
- (void)pushViewController:(UIViewController*)controller animated:(BOOL)animated;
- (UIViewController*)popViewControllerAnimated:(BOOL)animated; // nil when only the root is left
- (NSArray*)popToRootViewControllerAnimated:(BOOL)animated;
@end
