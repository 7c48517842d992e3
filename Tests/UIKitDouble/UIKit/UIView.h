#pragma once
#import "UIResponder.h"

@class UIGestureRecognizer, UIViewController, UIWindow;

@interface UIView : UIResponder <NSCoding> {
    UIView* _superview; // not retained
    NSMutableArray* _subviews;
    NSMutableArray* _gestureRecognizers;
    UIViewController* _viewDelegate; // the controller whose view this is; not retained
    CGRect _frame;
    CGPoint _boundsOrigin;
    NSInteger _tag;
    NSString* _accessibilityIdentifier;
    BOOL _hidden;
    BOOL _userInteractionEnabled;
}
@property(nonatomic) CGRect frame;
@property(nonatomic) CGRect bounds;
@property(nonatomic) NSInteger tag;
@property(nonatomic, getter=isHidden) BOOL hidden;
@property(nonatomic, getter=isUserInteractionEnabled) BOOL userInteractionEnabled;
@property(nonatomic, copy) NSString* accessibilityIdentifier;
@property(nonatomic, readonly) UIView* superview;
@property(nonatomic, readonly) NSArray* subviews;
@property(nonatomic, readonly) UIWindow* window;
@property(nonatomic, copy) NSArray* gestureRecognizers;

- (instancetype)initWithFrame:(CGRect)frame;
- (void)addSubview:(UIView*)view;
- (void)insertSubview:(UIView*)view atIndex:(NSInteger)index;
- (void)removeFromSuperview;
- (BOOL)isDescendantOfView:(UIView*)view;
- (UIView*)viewWithTag:(NSInteger)tag;

- (void)addGestureRecognizer:(UIGestureRecognizer*)recognizer;
- (void)removeGestureRecognizer:(UIGestureRecognizer*)recognizer;
- (BOOL)gestureRecognizerShouldBegin:(UIGestureRecognizer*)recognizer;

- (BOOL)pointInside:(CGPoint)point withEvent:(UIEvent*)event;
- (UIView*)hitTest:(CGPoint)point withEvent:(UIEvent*)event;
- (CGPoint)convertPoint:(CGPoint)point toView:(UIView*)view; // nil: the outermost view
- (CGPoint)convertPoint:(CGPoint)point fromView:(UIView*)view;
@end
