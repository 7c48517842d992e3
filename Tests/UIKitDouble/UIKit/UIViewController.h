#pragma once
#import "UINavigationItem.h"
#import "UITabBarItem.h"
#import "UIView.h"

@class UINavigationController, UITabBarController;

typedef NS_ENUM(NSInteger, UIModalPresentationStyle) {
    UIModalPresentationAutomatic = -2,
    UIModalPresentationFullScreen = 0,
    UIModalPresentationPageSheet = 1
};

// Appearance is told once a change, to the controller and then to the children that it shows. What is
// below a full screen disappears; below a sheet or an alert it does not.
@interface UIViewController : UIResponder <NSCoding> {
    UIView* _view;
    NSString* _title;
    UINavigationItem* _navigationItem;
    UITabBarItem* _tabBarItem;
    NSMutableArray* _childViewControllers;
    UIViewController* _parentViewController;     // not retained
    UIViewController* _presentingViewController; // not retained
    UIViewController* _presentedViewController;
    UIModalPresentationStyle _modalPresentationStyle;
    BOOL _isShown;
    BOOL _isInTransition;
}
@property(nonatomic, retain) UIView* view; // loaded when first asked for
@property(nonatomic, copy) NSString* title;
@property(nonatomic, readonly) UINavigationItem* navigationItem;
@property(nonatomic, retain) UITabBarItem* tabBarItem;
@property(nonatomic, readonly) NSArray* childViewControllers;
@property(nonatomic, readonly) UIViewController* parentViewController;
@property(nonatomic, readonly) UIViewController* presentingViewController;
@property(nonatomic, readonly) UIViewController* presentedViewController;
@property(nonatomic, readonly) UINavigationController* navigationController;
@property(nonatomic, readonly) UITabBarController* tabBarController;

@property(nonatomic) UIModalPresentationStyle modalPresentationStyle;

- (instancetype)initWithNibName:(NSString*)name bundle:(NSBundle*)bundle;
- (BOOL)isViewLoaded;
- (void)loadView;
- (void)viewDidLoad;
- (void)viewWillAppear:(BOOL)animated;
- (void)viewDidAppear:(BOOL)animated;
- (void)viewWillDisappear:(BOOL)animated;
- (void)viewDidDisappear:(BOOL)animated;

- (void)addChildViewController:(UIViewController*)child;
- (void)removeFromParentViewController;
- (void)willMoveToParentViewController:(UIViewController*)parent;
- (void)didMoveToParentViewController:(UIViewController*)parent;
- (BOOL)shouldAutomaticallyForwardAppearanceMethods;
- (void)beginAppearanceTransition:(BOOL)appears animated:(BOOL)animated;
- (void)endAppearanceTransition;

- (void)presentViewController:(UIViewController*)controller
                     animated:(BOOL)animated
                   completion:(void (^)(void))completion;
- (void)dismissViewControllerAnimated:(BOOL)animated completion:(void (^)(void))completion;
@end
