#import "UIKitPrivate.h"

@implementation UITargetAction
@end

@implementation UIGestureRecognizer
@synthesize view = _view, state = _state, delegate = _delegate, enabled = _enabled;
@synthesize cancelsTouchesInView = _cancelsTouchesInView;

- (void)_prepare {
    _targets = [[NSMutableArray alloc] init];
    _touches = [[NSMutableArray alloc] init];
    _enabled = YES;
    _cancelsTouchesInView = YES;
}

- (instancetype)init {
    return [self initWithTarget:nil action:NULL];
}

- (instancetype)initWithTarget:(id)target action:(SEL)action {
    if ((self = [super init])) {
        [self _prepare];
        if (target && action) [self addTarget:target action:action];
    }
    return self;
}

// What a storyboard takes: the targets are connected afterwards.
- (instancetype)initWithCoder:(NSCoder*)coder {
    (void)coder;
    if ((self = [super init])) [self _prepare];
    return self;
}

- (void)encodeWithCoder:(NSCoder*)coder {
    (void)coder;
}

- (void)dealloc {
    [_targets release];
    [_touches release];
    [super dealloc];
}

- (UITargetAction*)_pairOfTarget:(id)target action:(SEL)action {
    for (UITargetAction* pair in _targets) {
        if (pair->target == target && sel_isEqual(pair->action, action)) return pair;
    }
    return nil;
}

- (void)addTarget:(id)target action:(SEL)action {
    if (!target || !action || [self _pairOfTarget:target action:action]) return;
    UITargetAction* pair = [[UITargetAction alloc] init];
    pair->target = target;
    pair->action = action;
    [_targets addObject:pair];
    [pair release];
}

- (void)removeTarget:(id)target action:(SEL)action {
    for (UITargetAction* pair in [[_targets copy] autorelease]) {
        BOOL matches = (!target || pair->target == target) && (!action || sel_isEqual(pair->action, action));
        if (matches) [_targets removeObjectIdenticalTo:pair];
    }
}

- (void)setState:(UIGestureRecognizerState)state {
    _state = state;
    _isStateUntold = state >= UIGestureRecognizerStateBegan && state <= UIGestureRecognizerStateCancelled;
}

- (BOOL)_isStateUntold {
    return _isStateUntold;
}

- (BOOL)_isRecognizing {
    return _state >= UIGestureRecognizerStateBegan && _state <= UIGestureRecognizerStateEnded;
}

- (void)_takeBackState {
    _state = UIGestureRecognizerStateFailed;
    _isStateUntold = NO;
}

- (void)_tellState {
    _isStateUntold = NO;
    [[self retain] autorelease];
    for (UITargetAction* pair in [[_targets copy] autorelease]) {
        id target = [[pair->target retain] autorelease];
        BOOL takesRecognizer = [[target methodSignatureForSelector:pair->action] numberOfArguments] > 2;
        [target performSelector:pair->action withObject:takesRecognizer ? self : nil];
    }
}

- (void)_setView:(UIView*)view {
    _view = view;
}

- (BOOL)_shouldBegin {
    return YES;
}

- (void)_timePassed:(NSTimeInterval)time {
    (void)time;
}

- (NSMutableArray*)_followedTouches {
    return _touches;
}

- (NSUInteger)numberOfTouches {
    return [_touches count];
}

- (CGPoint)locationInView:(UIView*)view {
    CGPoint sum = CGPointZero;
    CGFloat count = (CGFloat)[_touches count];
    for (UITouch* touch in _touches) {
        CGPoint location = [touch locationInView:view];
        sum = CGPointMake(sum.x + location.x / count, sum.y + location.y / count);
    }
    return sum;
}

- (CGPoint)locationOfTouch:(NSUInteger)index inView:(UIView*)view {
    return [(UITouch*)[_touches objectAtIndex:index] locationInView:view];
}

- (void)reset {
    _state = UIGestureRecognizerStatePossible;
    _isStateUntold = NO;
}

- (void)touchesBegan:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    (void)event;
}
- (void)touchesMoved:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    (void)event;
}
- (void)touchesEnded:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    (void)event;
}
- (void)touchesCancelled:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    (void)event;
    self.state = [self _isRecognizing] ? UIGestureRecognizerStateCancelled : UIGestureRecognizerStateFailed;
}
@end
