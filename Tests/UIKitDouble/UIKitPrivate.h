#pragma once
// What the classes of the stand-in know of one another and an app does not.
#import <UIKit/UIKit.h>

// Call-stack symbols carry a method's name where its frame has this as its symbol. The call that it
// makes must not be its last deed, or the frame would be gone by then.
#define UIKIT_FRAME(symbol) __attribute__((noinline, used, visibility("default"), disable_tail_calls)) __asm__(symbol)

@interface UITargetAction : NSObject {
@public
    id target; // not retained
    SEL action;
    UIControlEvents events;
}
@end

@interface UITouch (Private)
- (instancetype)_initInView:(UIView*)view at:(CGPoint)point time:(NSTimeInterval)time;
- (void)_moveTo:(CGPoint)point inView:(UIView*)view phase:(UITouchPhase)phase time:(NSTimeInterval)time;
- (CGPoint)_location;
- (BOOL)_hasMoved; // further than a tap may
- (void)_setGestureRecognizers:(NSArray*)recognizers;
- (BOOL)_isTakenFromView;
- (void)_setTakenFromView;
@end

@interface UIEvent (Private)
- (instancetype)_initWithTouches:(NSSet*)touches time:(NSTimeInterval)time;
@end

@interface UIApplication (Private)
- (UIResponder*)_firstResponder;
- (void)_setFirstResponder:(UIResponder*)responder;
- (void)_setKeyWindow:(UIWindow*)window;
@end

@interface UIView (Private)
- (void)_setViewDelegate:(UIViewController*)controller;
- (UIView*)_outermostView;
@end

@interface UIGestureRecognizer (Private)
- (void)_setView:(UIView*)view;
- (BOOL)_shouldBegin;
- (void)_timePassed:(NSTimeInterval)time; // without the touch moving
- (BOOL)_isStateUntold;
- (void)_takeBackState; // the new one was not allowed
- (void)_tellState;
- (BOOL)_isRecognizing;
- (NSMutableArray*)_followedTouches;
@end

// Leads an event's touches through the recognizers first, then to the views that still get them.
@interface UIGestureEnvironment : NSObject
+ (void)deliverEvent:(UIEvent*)event;
@end

@interface UIScrollView (Private)
- (BOOL)_panShouldBegin:(UIPanGestureRecognizer*)recognizer;
@end

@interface UIScrollViewPanGestureRecognizer : UIPanGestureRecognizer
@end

@interface UITableView (Private)
- (UISwipeActionsConfiguration*)_swipeActionsForCell:(UITableViewCell*)cell;
- (void)_openSwipeActionsForCell:(UITableViewCell*)cell;
- (void)_closeSwipeActions;
- (void)_accessoryTappedForCell:(UITableViewCell*)cell;
@end

@interface UITableViewCell (Private)
- (UIView*)_accessoryButton;
- (void)_allowSwipe;
- (UITableView*)_tableView;
@end

@interface UIBarButtonItem (Private)
- (UIView*)_viewForBar;
@end

@interface UISearchBar (Private)
- (void)_setController:(UISearchController*)controller;
- (void)_textChanged;
@end

@interface UISearchController (Private)
- (void)_update;
@end

@interface UIViewController (Private)
- (NSArray*)_shownChildren;
- (BOOL)_isShown;
- (void)_appear:(BOOL)appears; // one whole transition
@end
