#import "UIKitPrivate.h"
#import "UINavigationBarPrivate.h"

@implementation UINavigationController
@synthesize navigationBar = _navigationBar;

- (instancetype)initWithNibName:(NSString*)name bundle:(NSBundle*)bundle {
    if ((self = [super initWithNibName:name bundle:bundle])) {
        _navigationBar = [[UINavigationBar alloc] initWithFrame:CGRectMake(0, 0, 320, 44)];
    }
    return self;
}

- (instancetype)initWithRootViewController:(UIViewController*)root {
    if ((self = [self init])) [self pushViewController:root animated:NO];
    return self;
}

- (void)dealloc {
    [_navigationBar release];
    [super dealloc];
}

- (void)viewDidLoad {
    [super viewDidLoad];
    [self.view addSubview:_navigationBar];
    [self _showTop];
}

- (UITabBarItem*)tabBarItem {
    return [[self.viewControllers firstObject] tabBarItem];
}

- (NSArray*)viewControllers {
    return self.childViewControllers;
}

- (UIViewController*)topViewController {
    return [self.childViewControllers lastObject];
}

- (NSArray*)_shownChildren {
    return self.topViewController ? [NSArray arrayWithObject:self.topViewController] : [NSArray array];
}

- (void)_showTop {
    UIViewController* top = self.topViewController;
    if (!top) return;
    top.view.frame = CGRectMake(0, 44, 320, self.view.bounds.size.height - 44);
    [self.view insertSubview:top.view atIndex:0];
    BOOL canGoBack = [self.viewControllers count] > 1;
    [_navigationBar _setTopItem:top.navigationItem backTarget:canGoBack ? self : nil action:@selector(_back:)];
}

- (void)_back:(id)sender {
    (void)sender;
    [self popViewControllerAnimated:YES];
}

- (void)_changeFrom:(UIViewController*)former to:(UIViewController*)top animated:(BOOL)animated {
    if (![self isViewLoaded]) return;
    BOOL isShown = [self _isShown];
    if (isShown) [former beginAppearanceTransition:NO animated:animated];
    if (isShown) [top beginAppearanceTransition:YES animated:animated];
    if ([former isViewLoaded]) [former.view removeFromSuperview];
    [self _showTop];
    [former endAppearanceTransition];
    [top endAppearanceTransition];
}

- (void)pushViewController:(UIViewController*)controller animated:(BOOL)animated {
    UIViewController* former = self.topViewController;
    if (!controller || controller == former) return;
    [self addChildViewController:controller];
    [self _changeFrom:former to:controller animated:animated];
    [controller didMoveToParentViewController:self];
}

- (UIViewController*)popViewControllerAnimated:(BOOL)animated {
    NSArray* controllers = self.viewControllers;
    if ([controllers count] < 2) return nil;
    UIViewController* former = [[[controllers lastObject] retain] autorelease];
    [former willMoveToParentViewController:nil];
    [former removeFromParentViewController];
    [self _changeFrom:former to:self.topViewController animated:animated];
    return former;
}

- (NSArray*)popToRootViewControllerAnimated:(BOOL)animated {
    NSArray* controllers = self.viewControllers;
    if ([controllers count] < 2) return [NSArray array];
    NSArray* popped = [controllers subarrayWithRange:NSMakeRange(1, [controllers count] - 1)];
    UIViewController* former = [[[controllers lastObject] retain] autorelease];
    for (UIViewController* controller in popped) [controller removeFromParentViewController];
    [self _changeFrom:former to:self.topViewController animated:animated];
    return popped;
}
@end
