#pragma once
#import "UIView.h"

@class UIGestureRecognizer;

typedef NS_ENUM(NSInteger, UIGestureRecognizerState) {
    UIGestureRecognizerStatePossible,
    UIGestureRecognizerStateBegan,
    UIGestureRecognizerStateChanged,
    UIGestureRecognizerStateEnded,
    UIGestureRecognizerStateCancelled,
    UIGestureRecognizerStateFailed,
    UIGestureRecognizerStateRecognized = UIGestureRecognizerStateEnded
};

@protocol UIGestureRecognizerDelegate <NSObject>
@optional
- (BOOL)gestureRecognizerShouldBegin:(UIGestureRecognizer*)recognizer;
- (BOOL)gestureRecognizer:(UIGestureRecognizer*)recognizer shouldReceiveTouch:(UITouch*)touch;
- (BOOL)gestureRecognizer:(UIGestureRecognizer*)recognizer
    shouldRecognizeSimultaneouslyWithGestureRecognizer:(UIGestureRecognizer*)other;
@end

// Watches the touches on its view and on the views inside it. Its targets, which it does not retain,
// hear of the states began, changed, ended and cancelled.
@interface UIGestureRecognizer : NSObject <NSCoding> {
    NSMutableArray* _targets;
    NSMutableArray* _touches; // those it follows
    UIView* _view;            // not retained
    id<UIGestureRecognizerDelegate> _delegate;
    UIGestureRecognizerState _state;
    BOOL _enabled;
    BOOL _cancelsTouchesInView;
    BOOL _isStateUntold;
}
@property(nonatomic, readonly) UIView* view;
@property(nonatomic) UIGestureRecognizerState state; // set by subclasses and, in tests, by hand
@property(nonatomic, assign) id<UIGestureRecognizerDelegate> delegate;
@property(nonatomic, getter=isEnabled) BOOL enabled;
@property(nonatomic) BOOL cancelsTouchesInView;
@property(nonatomic, readonly) NSUInteger numberOfTouches;

- (instancetype)initWithTarget:(id)target action:(SEL)action;
- (void)addTarget:(id)target action:(SEL)action; // a pair that is there is not added again
- (void)removeTarget:(id)target action:(SEL)action;
- (CGPoint)locationInView:(UIView*)view;
- (CGPoint)locationOfTouch:(NSUInteger)index inView:(UIView*)view;

// For subclasses.
- (void)touchesBegan:(NSSet*)touches withEvent:(UIEvent*)event;
- (void)touchesMoved:(NSSet*)touches withEvent:(UIEvent*)event;
- (void)touchesEnded:(NSSet*)touches withEvent:(UIEvent*)event;
- (void)touchesCancelled:(NSSet*)touches withEvent:(UIEvent*)event;
- (void)reset;
@end
