#import "UIKitPrivate.h"

@implementation UITabBarController
@synthesize tabBar = _tabBar, selectedIndex = _selectedIndex;

- (instancetype)initWithNibName:(NSString*)name bundle:(NSBundle*)bundle {
    if ((self = [super initWithNibName:name bundle:bundle])) {
        _tabBar = [[UITabBar alloc] initWithFrame:CGRectMake(0, 519, 320, 49)];
        _tabBar.delegate = self;
    }
    return self;
}

- (void)dealloc {
    _tabBar.delegate = nil;
    [_tabBar release];
    [super dealloc];
}

- (void)viewDidLoad {
    [super viewDidLoad];
    [self.view addSubview:_tabBar];
    [self _showSelected];
}

- (NSArray*)viewControllers {
    return self.childViewControllers;
}

- (void)setViewControllers:(NSArray*)controllers {
    for (UIViewController* child in self.childViewControllers) {
        if ([controllers indexOfObjectIdenticalTo:child] == NSNotFound) [child removeFromParentViewController];
    }
    NSMutableArray* items = [NSMutableArray array];
    for (UIViewController* controller in controllers) {
        [self addChildViewController:controller];
        [controller didMoveToParentViewController:self];
        [items addObject:controller.tabBarItem];
    }
    _tabBar.items = items;
    _tabBar.selectedItem = [items firstObject];
    _selectedIndex = 0;
    if ([self isViewLoaded]) [self _showSelected];
}

- (UIViewController*)selectedViewController {
    NSArray* controllers = self.childViewControllers;
    return _selectedIndex < [controllers count] ? [controllers objectAtIndex:_selectedIndex] : nil;
}

- (NSArray*)_shownChildren {
    return self.selectedViewController ? [NSArray arrayWithObject:self.selectedViewController] : [NSArray array];
}

- (void)_showSelected {
    UIViewController* selected = self.selectedViewController;
    if (!selected) return;
    selected.view.frame = CGRectMake(0, 0, 320, 519);
    [self.view insertSubview:selected.view atIndex:0];
}

- (void)setSelectedIndex:(NSUInteger)index {
    if (index == _selectedIndex || index >= [self.childViewControllers count]) return;
    UIViewController* former = self.selectedViewController;
    _selectedIndex = index;
    _tabBar.selectedItem = [_tabBar.items objectAtIndex:index];
    if (![self isViewLoaded]) return;
    UIViewController* selected = self.selectedViewController;
    BOOL isShown = [self _isShown];
    if (isShown) [former beginAppearanceTransition:NO animated:NO];
    if (isShown) [selected beginAppearanceTransition:YES animated:NO];
    if ([former isViewLoaded]) [former.view removeFromSuperview];
    [self _showSelected];
    [former endAppearanceTransition];
    [selected endAppearanceTransition];
}

// A tab that is tapped again goes back to its root.
- (void)tabBar:(UITabBar*)tabBar didSelectItem:(UITabBarItem*)item {
    NSUInteger index = [tabBar.items indexOfObjectIdenticalTo:item];
    if (index != _selectedIndex) {
        self.selectedIndex = index;
    } else if ([self.selectedViewController isKindOfClass:[UINavigationController class]]) {
        [(UINavigationController*)self.selectedViewController popToRootViewControllerAnimated:YES];
    }
}
@end
