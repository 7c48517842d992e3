#pragma once
#import "UIPanGestureRecognizer.h"
#import "UIRefreshControl.h"
#import "UIView.h"

@class UIScrollView;

@protocol UIScrollViewDelegate <NSObject>
@optional
- (void)scrollViewDidScroll:(UIScrollView*)scrollView;
- (void)scrollViewWillBeginDragging:(UIScrollView*)scrollView;
- (void)scrollViewDidEndDragging:(UIScrollView*)scrollView willDecelerate:(BOOL)decelerate;
- (void)scrollViewWillBeginDecelerating:(UIScrollView*)scrollView;
- (void)scrollViewDidEndDecelerating:(UIScrollView*)scrollView;
@end

// Its own pan recognizer moves the content. A finger that is lifted while it moves sets off a
// deceleration, which is over at once.
@interface UIScrollView : UIView {
    id _delegate;
    UIPanGestureRecognizer* _panGestureRecognizer;
    UIRefreshControl* _refreshControl;
    CGSize _contentSize;
    CGPoint _offsetAtDrag;
    BOOL _alwaysBounceVertical;
    BOOL _dragging, _decelerating;
    BOOL _hasRefreshed; // during this drag
}
@property(nonatomic, assign) id<UIScrollViewDelegate> delegate;
@property(nonatomic) CGPoint contentOffset;
@property(nonatomic) CGSize contentSize;
@property(nonatomic) BOOL alwaysBounceVertical;
@property(nonatomic, retain) UIRefreshControl* refreshControl;
@property(nonatomic, readonly) UIPanGestureRecognizer* panGestureRecognizer;
@property(nonatomic, readonly, getter=isDragging) BOOL dragging;
@property(nonatomic, readonly, getter=isDecelerating) BOOL decelerating;
- (void)setContentOffset:(CGPoint)offset animated:(BOOL)animated;
@end
