#import "UIKitPrivate.h"

#include <math.h>

static const CGFloat allowedMovement = 10;
static const NSTimeInterval allowedDuration = 1.5;

@implementation UITapGestureRecognizer
- (void)touchesBegan:(NSSet*)touches withEvent:(UIEvent*)event {
    if ([self numberOfTouches] > 1) {
        self.state = UIGestureRecognizerStateFailed;
        return;
    }
    _start = [(UITouch*)[touches anyObject] _location];
    _startTime = [event timestamp];
}

- (void)touchesMoved:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)event;
    CGPoint point = [(UITouch*)[touches anyObject] _location];
    if (hypot(point.x - _start.x, point.y - _start.y) > allowedMovement) self.state = UIGestureRecognizerStateFailed;
}

- (void)touchesEnded:(NSSet*)touches withEvent:(UIEvent*)event {
    [self touchesMoved:touches withEvent:event];
    if (self.state != UIGestureRecognizerStatePossible) return;
    BOOL isShort = [event timestamp] - _startTime <= allowedDuration;
    self.state = isShort ? UIGestureRecognizerStateEnded : UIGestureRecognizerStateFailed;
}

// A control on the way keeps a tap to itself.
- (BOOL)_shouldBegin {
    UIView* touched = [(UITouch*)[[self _followedTouches] lastObject] view];
    for (UIView* view = touched; view && view != self.view; view = [view superview]) {
        if ([view isKindOfClass:[UIControl class]]) return NO;
    }
    return YES;
}
@end
