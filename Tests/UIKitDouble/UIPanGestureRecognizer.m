#import "UIKitPrivate.h"

#include <math.h>

static const CGFloat neededMovement = 10;
static const NSTimeInterval restingTime = 0.05;

@implementation UIPanGestureRecognizer
- (CGPoint)translationInView:(UIView*)view {
    (void)view;
    return _translation;
}

- (void)setTranslation:(CGPoint)translation inView:(UIView*)view {
    (void)view;
    _translation = translation;
}

- (CGPoint)velocityInView:(UIView*)view {
    (void)view;
    return _velocity;
}

- (void)touchesBegan:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    _start = _last = [self locationInView:nil];
    _lastTime = [event timestamp];
    _translation = _velocity = CGPointZero;
}

- (void)touchesMoved:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    CGPoint point = [self locationInView:nil];
    NSTimeInterval elapsed = [event timestamp] - _lastTime;
    CGFloat x = point.x - _last.x, y = point.y - _last.y;
    _translation = CGPointMake(_translation.x + x, _translation.y + y);
    if (elapsed > 0) _velocity = CGPointMake(x / elapsed, y / elapsed);
    _last = point;
    _lastTime = [event timestamp];
    if ([self _isRecognizing]) {
        self.state = UIGestureRecognizerStateChanged;
    } else if (hypot(point.x - _start.x, point.y - _start.y) > neededMovement) {
        self.state = UIGestureRecognizerStateBegan;
    }
}

- (void)touchesEnded:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    if ([event timestamp] - _lastTime > restingTime) _velocity = CGPointZero;
    self.state = [self _isRecognizing] ? UIGestureRecognizerStateEnded : UIGestureRecognizerStateFailed;
}
@end
