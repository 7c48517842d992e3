#import "UIKitPrivate.h"

#include <math.h>

static const CGFloat allowedMovement = 10;

@implementation UILongPressGestureRecognizer
@synthesize minimumPressDuration = _minimumPressDuration;

- (instancetype)initWithTarget:(id)target action:(SEL)action {
    if ((self = [super initWithTarget:target action:action])) _minimumPressDuration = 0.5;
    return self;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    if ((self = [super initWithCoder:coder])) _minimumPressDuration = 0.5;
    return self;
}

- (void)touchesBegan:(NSSet*)touches withEvent:(UIEvent*)event {
    _startTime = [event timestamp];
    _start = [(UITouch*)[touches anyObject] _location];
    if ([self numberOfTouches] > 1) {
        self.state = UIGestureRecognizerStateFailed;
    } else if (_minimumPressDuration <= 0) {
        self.state = UIGestureRecognizerStateBegan;
    }
}

- (void)_timePassed:(NSTimeInterval)time {
    BOOL isWaiting = self.state == UIGestureRecognizerStatePossible && [self numberOfTouches] == 1;
    if (isWaiting && time - _startTime >= _minimumPressDuration) self.state = UIGestureRecognizerStateBegan;
}

- (void)touchesMoved:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)event;
    CGPoint point = [(UITouch*)[touches anyObject] _location];
    if ([self _isRecognizing]) {
        self.state = UIGestureRecognizerStateChanged;
    } else if (hypot(point.x - _start.x, point.y - _start.y) > allowedMovement) {
        self.state = UIGestureRecognizerStateFailed;
    }
}

- (void)touchesEnded:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    (void)event;
    self.state = [self _isRecognizing] ? UIGestureRecognizerStateEnded : UIGestureRecognizerStateFailed;
}
@end
