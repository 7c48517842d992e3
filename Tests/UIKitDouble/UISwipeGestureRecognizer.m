#import "UIKitPrivate.h"

#include <math.h>

static const CGFloat neededMovement = 30;

@implementation UISwipeGestureRecognizer
@synthesize direction = _direction;

- (instancetype)initWithTarget:(id)target action:(SEL)action {
    if ((self = [super initWithTarget:target action:action])) _direction = UISwipeGestureRecognizerDirectionRight;
    return self;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    if ((self = [super initWithCoder:coder])) _direction = UISwipeGestureRecognizerDirectionRight;
    return self;
}

- (void)touchesBegan:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)event;
    if ([self numberOfTouches] > 1) self.state = UIGestureRecognizerStateFailed;
    _start = [(UITouch*)[touches anyObject] _location];
}

- (void)touchesMoved:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)event;
    CGPoint point = [(UITouch*)[touches anyObject] _location];
    CGFloat x = point.x - _start.x, y = point.y - _start.y;
    if (hypot(x, y) < neededMovement) return;
    UISwipeGestureRecognizerDirection moved;
    if (fabs(x) > fabs(y)) {
        moved = x > 0 ? UISwipeGestureRecognizerDirectionRight : UISwipeGestureRecognizerDirectionLeft;
    } else {
        moved = y > 0 ? UISwipeGestureRecognizerDirectionDown : UISwipeGestureRecognizerDirectionUp;
    }
    self.state = (moved & _direction) ? UIGestureRecognizerStateEnded : UIGestureRecognizerStateFailed;
}

- (void)touchesEnded:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    (void)event;
    self.state = UIGestureRecognizerStateFailed;
}
@end
