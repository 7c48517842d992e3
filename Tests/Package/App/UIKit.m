#import <UIKit/UIKit.h>

@implementation UIResponder
@end

@implementation UIScreen
@synthesize bounds = _bounds;
+ (UIScreen*)mainScreen {
    static UIScreen* screen;
    if (!screen) {
        screen = [[UIScreen alloc] init];
        screen.bounds = NSMakeRect(0, 0, 390, 844);
    }
    return screen;
}
@end

@implementation UIApplication
+ (UIApplication*)sharedApplication {
    static UIApplication* shared;
    if (!shared) shared = [[UIApplication alloc] init];
    return shared;
}
- (BOOL)sendAction:(SEL)action to:(id)target from:(id)sender forEvent:(UIEvent*)event {
    [target performSelector:action withObject:sender];
    return YES;
}
@end

@implementation UIView
@end

@implementation UIControl
@end

@implementation UIButton
@synthesize currentTitle = _currentTitle;
- (void)dealloc {
    [_currentTitle release];
    [super dealloc];
}
@end

@implementation UIViewController
@synthesize title = _title;
- (void)dealloc {
    [_title release];
    [super dealloc];
}
- (void)viewWillAppear:(BOOL)animated {
}
- (void)viewWillDisappear:(BOOL)animated {
}
@end

@implementation UIBarItem
@end

@implementation UIGestureRecognizer
- (instancetype)initWithTarget:(id)target action:(SEL)action {
    return [super init];
}
@end
