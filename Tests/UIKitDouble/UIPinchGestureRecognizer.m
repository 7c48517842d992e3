#import "UIKitPrivate.h"

#include <math.h>

static const CGFloat neededMovement = 8;

@implementation UIPinchGestureRecognizer
@synthesize scale = _scale;

- (CGFloat)_distance {
    CGPoint one = [self locationOfTouch:0 inView:nil], two = [self locationOfTouch:1 inView:nil];
    return hypot(one.x - two.x, one.y - two.y);
}

- (void)touchesBegan:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    (void)event;
    if ([self numberOfTouches] == 2) _startDistance = [self _distance];
    _scale = 1;
}

- (void)touchesMoved:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    (void)event;
    if ([self numberOfTouches] != 2) return;
    CGFloat distance = [self _distance];
    BOOL hasBegun = self.state != UIGestureRecognizerStatePossible;
    if (!hasBegun && fabs(distance - _startDistance) < neededMovement) return;
    if (_startDistance > 0) _scale = distance / _startDistance;
    self.state = hasBegun ? UIGestureRecognizerStateChanged : UIGestureRecognizerStateBegan;
}

- (void)touchesEnded:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    (void)event;
    self.state = [self _isRecognizing] ? UIGestureRecognizerStateEnded : UIGestureRecognizerStateFailed;
}
@end
