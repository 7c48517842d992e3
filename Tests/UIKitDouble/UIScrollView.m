#import "UIKitPrivate.h"

#include <math.h>

static const CGFloat bounce = 120;
static const CGFloat refreshDistance = 60;
static const CGFloat flingVelocity = 100; // points a second
static const NSTimeInterval flingTime = 0.4;

@implementation UIScrollViewPanGestureRecognizer
- (BOOL)_shouldBegin {
    return [(UIScrollView*)self.view _panShouldBegin:self];
}
@end

@implementation UIScrollView
@synthesize delegate = _delegate, contentSize = _contentSize, alwaysBounceVertical = _alwaysBounceVertical;
@synthesize panGestureRecognizer = _panGestureRecognizer, dragging = _dragging, decelerating = _decelerating;
@synthesize refreshControl = _refreshControl;

- (void)_addPan {
    _panGestureRecognizer = [[UIScrollViewPanGestureRecognizer alloc] initWithTarget:self action:@selector(handlePan:)];
    [self addGestureRecognizer:_panGestureRecognizer];
}

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super initWithFrame:frame])) [self _addPan];
    return self;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    if ((self = [super initWithCoder:coder])) [self _addPan];
    return self;
}

- (void)dealloc {
    [_panGestureRecognizer release];
    [_refreshControl release];
    [super dealloc];
}

- (void)setRefreshControl:(UIRefreshControl*)control {
    [control retain];
    [_refreshControl removeFromSuperview];
    [_refreshControl release];
    _refreshControl = control;
    if (control) [self insertSubview:control atIndex:0];
}

- (CGPoint)contentOffset {
    return _boundsOrigin;
}

- (void)setContentOffset:(CGPoint)offset {
    if (NSEqualPoints(offset, _boundsOrigin)) return;
    _boundsOrigin = offset;
    [self _didScroll];
    if ([_delegate respondsToSelector:@selector(scrollViewDidScroll:)]) [_delegate scrollViewDidScroll:self];
}

- (void)setContentOffset:(CGPoint)offset animated:(BOOL)animated {
    (void)animated;
    self.contentOffset = offset;
}

- (void)_didScroll {
}

- (CGPoint)_offset:(CGPoint)offset within:(CGFloat)margin {
    CGFloat maximumX = MAX(_contentSize.width - _frame.size.width, 0);
    CGFloat maximumY = MAX(_contentSize.height - _frame.size.height, 0);
    CGFloat marginX = maximumX > 0 ? margin : 0;
    CGFloat marginY = maximumY > 0 || _alwaysBounceVertical ? margin : 0;
    return CGPointMake(MIN(MAX(offset.x, -marginX), maximumX + marginX),
                       MIN(MAX(offset.y, -marginY), maximumY + marginY));
}

// Only along a side on which there is something to scroll.
- (BOOL)_panShouldBegin:(UIPanGestureRecognizer*)recognizer {
    CGPoint moved = [recognizer translationInView:self];
    if (fabs(moved.x) > fabs(moved.y)) return _contentSize.width > _frame.size.width;
    return _alwaysBounceVertical || _contentSize.height > _frame.size.height;
}

- (void)handlePan:(UIPanGestureRecognizer*)recognizer {
    CGPoint moved = [recognizer translationInView:self];
    switch (recognizer.state) {
    case UIGestureRecognizerStateBegan:
        _dragging = YES;
        _hasRefreshed = NO;
        _offsetAtDrag = _boundsOrigin;
        if ([_delegate respondsToSelector:@selector(scrollViewWillBeginDragging:)]) {
            [_delegate scrollViewWillBeginDragging:self];
        }
        break;
    case UIGestureRecognizerStateChanged:
        self.contentOffset = [self _offset:CGPointMake(_offsetAtDrag.x - moved.x, _offsetAtDrag.y - moved.y)
                                    within:bounce];
        [self _refreshWhenPulled];
        break;
    case UIGestureRecognizerStateEnded:
    case UIGestureRecognizerStateCancelled: [self _endDragWithVelocity:[recognizer velocityInView:self]]; break;
    default: break;
    }
}

- (void)_refreshWhenPulled {
    if (!_refreshControl || _hasRefreshed || [_refreshControl isRefreshing]) return;
    if (_boundsOrigin.y > -refreshDistance) return;
    _hasRefreshed = YES;
    [_refreshControl beginRefreshing];
    [_refreshControl sendActionsForControlEvents:UIControlEventValueChanged | UIControlEventPrimaryActionTriggered];
}

- (void)_endDragWithVelocity:(CGPoint)velocity {
    [[self retain] autorelease];
    CGPoint rest =
        [self _offset:CGPointMake(_boundsOrigin.x - velocity.x * flingTime, _boundsOrigin.y - velocity.y * flingTime)
               within:0];
    BOOL decelerates = hypot(velocity.x, velocity.y) > flingVelocity || !NSEqualPoints(rest, _boundsOrigin);
    _dragging = NO;
    if ([_delegate respondsToSelector:@selector(scrollViewDidEndDragging:willDecelerate:)]) {
        [_delegate scrollViewDidEndDragging:self willDecelerate:decelerates];
    }
    if (decelerates) [self _decelerateTo:rest];
}

- (void)_decelerateTo:(CGPoint)rest {
    _decelerating = YES;
    if ([_delegate respondsToSelector:@selector(scrollViewWillBeginDecelerating:)]) {
        [_delegate scrollViewWillBeginDecelerating:self];
    }
    self.contentOffset = rest;
    _decelerating = NO;
    if ([_delegate respondsToSelector:@selector(scrollViewDidEndDecelerating:)]) {
        [_delegate scrollViewDidEndDecelerating:self];
    }
}
@end
