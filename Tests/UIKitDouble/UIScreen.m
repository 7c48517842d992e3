#import "UIKitPrivate.h"

@implementation UIScreen
@synthesize bounds = _bounds;

+ (UIScreen*)mainScreen {
    static UIScreen* screen;
    if (!screen) {
        screen = [[UIScreen alloc] init];
        screen.bounds = CGRectMake(0, 0, 320, 568);
    }
    return screen;
}
@end
