#import "UIKitPrivate.h"

@implementation UIView
@synthesize frame = _frame, tag = _tag, hidden = _hidden, userInteractionEnabled = _userInteractionEnabled;
@synthesize accessibilityIdentifier = _accessibilityIdentifier, superview = _superview;

- (void)_prepare {
    _subviews = [[NSMutableArray alloc] init];
    _gestureRecognizers = [[NSMutableArray alloc] init];
    _userInteractionEnabled = YES;
}

- (instancetype)init {
    return [self initWithFrame:CGRectZero];
}

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super init])) {
        [self _prepare];
        _frame = frame;
    }
    return self;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    if ((self = [super init])) {
        [self _prepare];
        if ([coder allowsKeyedCoding] && [coder containsValueForKey:@"UIFrame"])
            _frame = [coder decodeRectForKey:@"UIFrame"];
    }
    return self;
}

- (void)encodeWithCoder:(NSCoder*)coder {
    if ([coder allowsKeyedCoding]) [coder encodeRect:_frame forKey:@"UIFrame"];
}

- (void)dealloc {
    if ([self isFirstResponder]) [[UIApplication sharedApplication] _setFirstResponder:nil];
    for (UIView* view in _subviews) view->_superview = nil;
    for (UIGestureRecognizer* recognizer in _gestureRecognizers) [recognizer _setView:nil];
    [_subviews release];
    [_gestureRecognizers release];
    [_accessibilityIdentifier release];
    [super dealloc];
}

- (UIResponder*)nextResponder {
    return _viewDelegate ? (UIResponder*)_viewDelegate : (UIResponder*)_superview;
}

- (void)_setViewDelegate:(UIViewController*)controller {
    _viewDelegate = controller;
}

- (CGRect)bounds {
    return CGRectMake(_boundsOrigin.x, _boundsOrigin.y, _frame.size.width, _frame.size.height);
}

- (void)setBounds:(CGRect)bounds {
    _boundsOrigin = bounds.origin;
    _frame.size = bounds.size;
}

- (NSArray*)subviews {
    return [[_subviews copy] autorelease];
}

- (UIWindow*)window {
    UIView* outermost = [self _outermostView];
    return [outermost isKindOfClass:[UIWindow class]] ? (UIWindow*)outermost : nil;
}

- (UIView*)_outermostView {
    UIView* view = self;
    while (view->_superview) view = view->_superview;
    return view;
}

- (void)addSubview:(UIView*)view {
    [self insertSubview:view atIndex:(NSInteger)[_subviews count]];
}

- (void)insertSubview:(UIView*)view atIndex:(NSInteger)index {
    if (!view || [self isDescendantOfView:view]) return;
    [view retain];
    [view removeFromSuperview];
    [_subviews insertObject:view atIndex:MIN((NSUInteger)MAX(index, 0), [_subviews count])];
    view->_superview = self;
    [view release];
}

- (void)removeFromSuperview {
    if (!_superview) return;
    [[self retain] autorelease];
    UIView* former = _superview;
    _superview = nil;
    [former->_subviews removeObjectIdenticalTo:self];
}

- (BOOL)isDescendantOfView:(UIView*)view {
    for (UIView* ancestor = self; ancestor; ancestor = ancestor->_superview) {
        if (ancestor == view) return YES;
    }
    return NO;
}

- (UIView*)viewWithTag:(NSInteger)tag {
    if (_tag == tag) return self;
    for (UIView* view in _subviews) {
        UIView* found = [view viewWithTag:tag];
        if (found) return found;
    }
    return nil;
}

- (NSArray*)gestureRecognizers {
    return [[_gestureRecognizers copy] autorelease];
}

- (void)setGestureRecognizers:(NSArray*)recognizers {
    for (UIGestureRecognizer* recognizer in [self gestureRecognizers]) [self removeGestureRecognizer:recognizer];
    for (UIGestureRecognizer* recognizer in recognizers) [self addGestureRecognizer:recognizer];
}

- (void)addGestureRecognizer:(UIGestureRecognizer*)recognizer {
    if (!recognizer || [recognizer view] == self) return;
    [recognizer retain];
    [[recognizer view] removeGestureRecognizer:recognizer];
    [_gestureRecognizers addObject:recognizer];
    [recognizer _setView:self];
    [recognizer release];
}

- (void)removeGestureRecognizer:(UIGestureRecognizer*)recognizer {
    if ([_gestureRecognizers indexOfObjectIdenticalTo:recognizer] == NSNotFound) return;
    [recognizer _setView:nil];
    [[recognizer retain] autorelease];
    [_gestureRecognizers removeObjectIdenticalTo:recognizer];
}

- (BOOL)gestureRecognizerShouldBegin:(UIGestureRecognizer*)recognizer {
    (void)recognizer;
    return YES;
}

- (BOOL)pointInside:(CGPoint)point withEvent:(UIEvent*)event {
    (void)event;
    return NSPointInRect(point, [self bounds]);
}

- (UIView*)hitTest:(CGPoint)point withEvent:(UIEvent*)event {
    if (_hidden || !_userInteractionEnabled || ![self pointInside:point withEvent:event]) return nil;
    for (UIView* view in [_subviews reverseObjectEnumerator]) {
        UIView* hit = [view hitTest:[view convertPoint:point fromView:self] withEvent:event];
        if (hit) return hit;
    }
    return self;
}

- (CGPoint)convertPoint:(CGPoint)point toView:(UIView*)view {
    for (UIView* ancestor = self; ancestor && ancestor != view; ancestor = ancestor->_superview) {
        point.x += ancestor->_frame.origin.x - ancestor->_boundsOrigin.x;
        point.y += ancestor->_frame.origin.y - ancestor->_boundsOrigin.y;
        if (!ancestor->_superview) return view ? [view convertPoint:point fromView:nil] : point;
    }
    return point;
}

- (CGPoint)convertPoint:(CGPoint)point fromView:(UIView*)view {
    CGPoint outer = view ? [view convertPoint:point toView:nil] : point;
    CGPoint origin = [self convertPoint:CGPointZero toView:nil];
    return CGPointMake(outer.x - origin.x, outer.y - origin.y);
}
@end
