#import "UIKitPrivate.h"

@implementation UIViewController
@synthesize title = _title, tabBarItem = _tabBarItem, parentViewController = _parentViewController;
@synthesize presentingViewController = _presentingViewController, presentedViewController = _presentedViewController;
@synthesize modalPresentationStyle = _modalPresentationStyle;

- (void)_prepare {
    _childViewControllers = [[NSMutableArray alloc] init];
    _modalPresentationStyle = UIModalPresentationAutomatic;
}

- (instancetype)init {
    return [self initWithNibName:nil bundle:nil];
}

- (instancetype)initWithNibName:(NSString*)name bundle:(NSBundle*)bundle {
    (void)name;
    (void)bundle;
    if ((self = [super init])) [self _prepare];
    return self;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    if ((self = [super init])) {
        [self _prepare];
        if ([coder allowsKeyedCoding]) _title = [[coder decodeObjectForKey:@"UITitle"] copy];
    }
    return self;
}

- (void)encodeWithCoder:(NSCoder*)coder {
    if ([coder allowsKeyedCoding]) [coder encodeObject:_title forKey:@"UITitle"];
}

- (void)dealloc {
    for (UIViewController* child in _childViewControllers) child->_parentViewController = nil;
    [_view _setViewDelegate:nil];
    [_view release];
    [_title release];
    [_navigationItem release];
    [_tabBarItem release];
    [_childViewControllers release];
    [_presentedViewController release];
    [super dealloc];
}

- (UIResponder*)nextResponder {
    UIView* above = _view.superview;
    return above ? (UIResponder*)above : (UIResponder*)_parentViewController;
}

- (BOOL)isViewLoaded {
    return _view != nil;
}

- (UIView*)view {
    if (!_view) {
        [self loadView];
        [self viewDidLoad];
    }
    return _view;
}

- (void)setView:(UIView*)view {
    [view retain];
    [_view _setViewDelegate:nil];
    [_view release];
    _view = view;
    [_view _setViewDelegate:self];
}

- (void)loadView {
    self.view = [[[UIView alloc] initWithFrame:CGRectMake(0, 0, 320, 568)] autorelease];
}

- (void)viewDidLoad {
}
- (void)viewWillAppear:(BOOL)animated {
    (void)animated;
}
- (void)viewDidAppear:(BOOL)animated {
    (void)animated;
}
- (void)viewWillDisappear:(BOOL)animated {
    (void)animated;
}
- (void)viewDidDisappear:(BOOL)animated {
    (void)animated;
}

- (UINavigationItem*)navigationItem {
    if (!_navigationItem) _navigationItem = [[UINavigationItem alloc] initWithTitle:nil];
    return _navigationItem;
}

- (UITabBarItem*)tabBarItem {
    if (!_tabBarItem) _tabBarItem = [[UITabBarItem alloc] initWithTitle:_title image:nil tag:0];
    return _tabBarItem;
}

- (id)_ancestorOfClass:(Class)wanted {
    UIViewController* ancestor = _parentViewController;
    while (ancestor && ![ancestor isKindOfClass:wanted]) ancestor = ancestor->_parentViewController;
    return ancestor;
}

- (UINavigationController*)navigationController {
    return [self _ancestorOfClass:[UINavigationController class]];
}

- (UITabBarController*)tabBarController {
    return [self _ancestorOfClass:[UITabBarController class]];
}

- (NSArray*)childViewControllers {
    return [[_childViewControllers copy] autorelease];
}

- (NSArray*)_shownChildren {
    return self.childViewControllers;
}

- (void)addChildViewController:(UIViewController*)child {
    if (!child || child->_parentViewController == self) return;
    [child retain];
    [child removeFromParentViewController];
    [child willMoveToParentViewController:self];
    [_childViewControllers addObject:child];
    child->_parentViewController = self;
    [child release];
}

- (void)removeFromParentViewController {
    UIViewController* former = _parentViewController;
    if (!former) return;
    [[self retain] autorelease];
    _parentViewController = nil;
    [former->_childViewControllers removeObjectIdenticalTo:self];
    [self didMoveToParentViewController:nil];
}

- (void)willMoveToParentViewController:(UIViewController*)parent {
    (void)parent;
}
- (void)didMoveToParentViewController:(UIViewController*)parent {
    (void)parent;
}

- (BOOL)shouldAutomaticallyForwardAppearanceMethods {
    return YES;
}

- (BOOL)_isShown {
    return _isShown;
}

- (void)beginAppearanceTransition:(BOOL)appears animated:(BOOL)animated {
    if (appears == _isShown) return;
    _isShown = appears;
    _isInTransition = YES;
    [[self retain] autorelease];
    if (appears) {
        [self view];
        [self viewWillAppear:animated];
    } else {
        [self viewWillDisappear:animated];
    }
    if (![self shouldAutomaticallyForwardAppearanceMethods]) return;
    for (UIViewController* child in [self _shownChildren]) [child beginAppearanceTransition:appears animated:animated];
}

- (void)endAppearanceTransition {
    if (!_isInTransition) return;
    _isInTransition = NO;
    if (_isShown) {
        [self viewDidAppear:NO];
    } else {
        [self viewDidDisappear:NO];
    }
    if (![self shouldAutomaticallyForwardAppearanceMethods]) return;
    for (UIViewController* child in [self _shownChildren]) [child endAppearanceTransition];
}

- (void)_appear:(BOOL)appears {
    [self beginAppearanceTransition:appears animated:NO];
    [self endAppearanceTransition];
}

- (UIViewController*)_outermostParent {
    UIViewController* controller = self;
    while (controller->_parentViewController) controller = controller->_parentViewController;
    return controller;
}

- (void)presentViewController:(UIViewController*)controller
                     animated:(BOOL)animated
                   completion:(void (^)(void))completion {
    UIViewController* presenter = [self _outermostParent];
    if (!controller || presenter->_presentedViewController) return;
    presenter->_presentedViewController = [controller retain];
    controller->_presentingViewController = presenter;
    BOOL covers = controller.modalPresentationStyle == UIModalPresentationFullScreen;
    if (covers) [presenter beginAppearanceTransition:NO animated:animated];
    [controller beginAppearanceTransition:YES animated:animated];
    [[presenter.view _outermostView] addSubview:controller.view];
    if (covers) [presenter endAppearanceTransition];
    [controller endAppearanceTransition];
    if (completion) completion();
}

// Asked of the presenter, of what it presented, or of a controller inside that.
- (void)dismissViewControllerAnimated:(BOOL)animated completion:(void (^)(void))completion {
    UIViewController* presenter = [self _outermostParent];
    if (!presenter->_presentedViewController) presenter = presenter->_presentingViewController;
    UIViewController* presented = [presenter->_presentedViewController autorelease];
    if (!presented) return;
    [[self retain] autorelease];
    presenter->_presentedViewController = nil;
    presented->_presentingViewController = nil;
    [presented beginAppearanceTransition:NO animated:animated];
    [presented.view removeFromSuperview];
    [presenter beginAppearanceTransition:YES animated:animated];
    [presented endAppearanceTransition];
    [presenter endAppearanceTransition];
    if (completion) completion();
}
@end
