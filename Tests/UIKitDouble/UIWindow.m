#import "UIKitPrivate.h"

@implementation UIWindow
@synthesize rootViewController = _rootViewController, keyWindow = _keyWindow;

- (void)dealloc {
    if ([[UIApplication sharedApplication] keyWindow] == self) [[UIApplication sharedApplication] _setKeyWindow:nil];
    [_rootViewController release];
    [super dealloc];
}

- (UIResponder*)nextResponder {
    return [UIApplication sharedApplication];
}

- (void)setRootViewController:(UIViewController*)controller {
    if (controller == _rootViewController) return;
    UIViewController* former = _rootViewController;
    _rootViewController = [controller retain];
    if (!_keyWindow) {
        [former release];
        return;
    }
    [former beginAppearanceTransition:NO animated:NO];
    [[former view] removeFromSuperview];
    [former endAppearanceTransition];
    [former release];
    [self _showRoot];
}

- (void)makeKeyAndVisible {
    if (_keyWindow) return;
    _keyWindow = YES;
    [[UIApplication sharedApplication] _setKeyWindow:self];
    [self _showRoot];
}

- (void)_showRoot {
    [[_rootViewController view] setFrame:[self bounds]];
    [self insertSubview:[_rootViewController view] atIndex:0];
    [_rootViewController _appear:YES];
}

- (void)sendEvent:(UIEvent*)event {
    [UIGestureEnvironment deliverEvent:event];
}
@end
