#import "UIKitPrivate.h"

static const CGFloat touchMargin = 70; // a finger may slip off a control by so much

void UIControlTouchesEnded(UIControl* control, NSSet* touches, UIEvent* event)
    UIKIT_FRAME("-[UIControl touchesEnded:withEvent:]");

@interface UIControl (Touches)
- (void)_finishTouch:(UITouch*)touch event:(UIEvent*)event;
@end

void UIControlTouchesEnded(UIControl* control, NSSet* touches, UIEvent* event) {
    [control _finishTouch:[touches anyObject] event:event];
}

@implementation UIControl
@synthesize enabled = _enabled, selected = _selected, tracking = _tracking, touchInside = _touchInside;

- (void)_prepareControl {
    _targetActions = [[NSMutableArray alloc] init];
    _enabled = YES;
}

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super initWithFrame:frame])) [self _prepareControl];
    return self;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    if ((self = [super initWithCoder:coder])) [self _prepareControl];
    return self;
}

- (void)dealloc {
    [_targetActions release];
    [super dealloc];
}

- (void)addTarget:(id)target action:(SEL)action forControlEvents:(UIControlEvents)events {
    if (!action) return;
    for (UITargetAction* pair in _targetActions) {
        if (pair->target == target && sel_isEqual(pair->action, action)) {
            pair->events |= events;
            return;
        }
    }
    UITargetAction* pair = [[UITargetAction alloc] init];
    pair->target = target;
    pair->action = action;
    pair->events = events;
    [_targetActions addObject:pair];
    [pair release];
}

- (void)removeTarget:(id)target action:(SEL)action forControlEvents:(UIControlEvents)events {
    for (UITargetAction* pair in [[_targetActions copy] autorelease]) {
        if ((target && pair->target != target) || (action && !sel_isEqual(pair->action, action))) continue;
        pair->events &= ~events;
        if (!pair->events) [_targetActions removeObjectIdenticalTo:pair];
    }
}

- (NSSet*)allTargets {
    NSMutableSet* targets = [NSMutableSet set];
    for (UITargetAction* pair in _targetActions) [targets addObject:pair->target ? pair->target : [NSNull null]];
    return targets;
}

- (NSArray*)actionsForTarget:(id)target forControlEvent:(UIControlEvents)event {
    NSMutableArray* actions = [NSMutableArray array];
    for (UITargetAction* pair in _targetActions) {
        if (pair->target == target && (pair->events & event)) [actions addObject:NSStringFromSelector(pair->action)];
    }
    return [actions count] ? actions : nil;
}

- (void)sendAction:(SEL)action to:(id)target forEvent:(UIEvent*)event {
    [[UIApplication sharedApplication] sendAction:action to:target from:self forEvent:event];
}

- (void)_sendActionsForControlEvents:(UIControlEvents)events withEvent:(UIEvent*)event {
    [[self retain] autorelease];
    for (UITargetAction* pair in [[_targetActions copy] autorelease]) {
        if (pair->events & events) [self sendAction:pair->action to:pair->target forEvent:event];
    }
}

- (void)sendActionsForControlEvents:(UIControlEvents)events {
    [self _sendActionsForControlEvents:events withEvent:nil];
}

- (BOOL)beginTrackingWithTouch:(UITouch*)touch withEvent:(UIEvent*)event {
    (void)touch;
    (void)event;
    return YES;
}

- (BOOL)continueTrackingWithTouch:(UITouch*)touch withEvent:(UIEvent*)event {
    (void)touch;
    (void)event;
    return YES;
}

- (void)endTrackingWithTouch:(UITouch*)touch withEvent:(UIEvent*)event {
    (void)touch;
    (void)event;
}

- (void)cancelTrackingWithEvent:(UIEvent*)event {
    (void)event;
}

- (BOOL)_isInside:(UITouch*)touch {
    return NSPointInRect([touch locationInView:self], NSInsetRect([self bounds], -touchMargin, -touchMargin));
}

- (void)touchesBegan:(NSSet*)touches withEvent:(UIEvent*)event {
    if (!_enabled) return;
    _touchInside = YES;
    _tracking = [self beginTrackingWithTouch:[touches anyObject] withEvent:event];
    [self _sendActionsForControlEvents:UIControlEventTouchDown withEvent:event];
}

- (void)touchesMoved:(NSSet*)touches withEvent:(UIEvent*)event {
    if (!_tracking) return;
    UITouch* touch = [touches anyObject];
    _touchInside = [self _isInside:touch];
    _tracking = [self continueTrackingWithTouch:touch withEvent:event];
    UIControlEvents drag = _touchInside ? UIControlEventTouchDragInside : UIControlEventTouchDragOutside;
    [self _sendActionsForControlEvents:drag withEvent:event];
}

- (void)touchesEnded:(NSSet*)touches withEvent:(UIEvent*)event __attribute__((disable_tail_calls)) {
    UIControlTouchesEnded(self, touches, event);
}

- (void)_finishTouch:(UITouch*)touch event:(UIEvent*)event {
    if (!_tracking) return;
    [[self retain] autorelease];
    _tracking = NO;
    _touchInside = [self _isInside:touch];
    [self endTrackingWithTouch:touch withEvent:event];
    UIControlEvents up = UIControlEventTouchUpOutside;
    if (_touchInside) up = UIControlEventTouchUpInside | [self _primaryEventOfTouch];
    _touchInside = NO;
    [self _sendActionsForControlEvents:up withEvent:event];
}

// A button's touch is its primary action; the others' is a new value.
- (UIControlEvents)_primaryEventOfTouch {
    return 0;
}

- (void)touchesCancelled:(NSSet*)touches withEvent:(UIEvent*)event {
    (void)touches;
    if (!_tracking) return;
    _tracking = _touchInside = NO;
    [self cancelTrackingWithEvent:event];
    [self _sendActionsForControlEvents:UIControlEventTouchCancel withEvent:event];
}
@end
