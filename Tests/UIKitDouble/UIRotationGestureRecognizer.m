#import "UIKitPrivate.h"

#include <math.h>

static const CGFloat neededRotation = 0.1;

@implementation UIRotationGestureRecognizer
@synthesize rotation = _rotation;

- (CGFloat)_angle {
    CGPoint one = [self locationOfTouch:0 inView:nil], two = [self locationOfTouch:1 inView:nil];
    return atan2(two.y - one.y, two.x - one.x);
}

- (void)touchesBegan:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    (void)event;
    if ([self numberOfTouches] == 2) _startAngle = [self _angle];
    _rotation = 0;
}

- (void)touchesMoved:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    (void)event;
    if ([self numberOfTouches] != 2) return;
    _rotation = [self _angle] - _startAngle;
    BOOL hasBegun = self.state != UIGestureRecognizerStatePossible;
    if (!hasBegun && fabs(_rotation) < neededRotation) return;
    self.state = hasBegun ? UIGestureRecognizerStateChanged : UIGestureRecognizerStateBegan;
}

- (void)touchesEnded:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    (void)event;
    self.state = [self _isRecognizing] ? UIGestureRecognizerStateEnded : UIGestureRecognizerStateFailed;
}
@end
