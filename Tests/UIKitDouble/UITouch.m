#import "UIKitPrivate.h"

#include <math.h>

static const CGFloat allowedMovement = 10;

@implementation UITouch
@synthesize view = _view, phase = _phase, timestamp = _timestamp, gestureRecognizers = _gestureRecognizers;

- (instancetype)_initInView:(UIView*)view at:(CGPoint)point time:(NSTimeInterval)time {
    if ((self = [super init])) {
        _view = [view retain];
        _phase = UITouchPhaseBegan;
        _timestamp = time;
        _location = _previousLocation = _startLocation = [view convertPoint:point toView:nil];
    }
    return self;
}

- (void)dealloc {
    [_view release];
    [_gestureRecognizers release];
    [super dealloc];
}

- (UIWindow*)window {
    return [_view window];
}

- (void)_moveTo:(CGPoint)point inView:(UIView*)view phase:(UITouchPhase)phase time:(NSTimeInterval)time {
    _previousLocation = _location;
    _location = view ? [view convertPoint:point toView:nil] : point;
    _phase = phase;
    _timestamp = time;
}

- (BOOL)_hasMoved {
    return hypot(_location.x - _startLocation.x, _location.y - _startLocation.y) > allowedMovement;
}

- (CGPoint)_location {
    return _location;
}

- (CGPoint)locationInView:(UIView*)view {
    return view ? [view convertPoint:_location fromView:nil] : _location;
}

- (CGPoint)previousLocationInView:(UIView*)view {
    return view ? [view convertPoint:_previousLocation fromView:nil] : _previousLocation;
}

- (void)_setGestureRecognizers:(NSArray*)recognizers {
    [_gestureRecognizers autorelease];
    _gestureRecognizers = [recognizers copy];
}

- (BOOL)_isTakenFromView {
    return _isTakenFromView;
}

- (void)_setTakenFromView {
    _isTakenFromView = YES;
}
@end
