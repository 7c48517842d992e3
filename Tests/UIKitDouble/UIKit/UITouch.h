#pragma once
#import "UIGeometry.h"

@class UIView, UIWindow;

typedef NS_ENUM(NSInteger, UITouchPhase) {
    UITouchPhaseBegan,
    UITouchPhaseMoved,
    UITouchPhaseStationary,
    UITouchPhaseEnded,
    UITouchPhaseCancelled
};

// One finger, from the moment it comes down on a view until it is lifted.
@interface UITouch : NSObject {
    UIView* _view;
    UITouchPhase _phase;
    NSTimeInterval _timestamp;
    CGPoint _startLocation;
    CGPoint _location; // in the coordinates that the outermost view is in
    CGPoint _previousLocation;
    NSArray* _gestureRecognizers;
    BOOL _isTakenFromView;
}
@property(nonatomic, readonly) UIView* view;
@property(nonatomic, readonly) UIWindow* window;
@property(nonatomic, readonly) UITouchPhase phase;
@property(nonatomic, readonly) NSTimeInterval timestamp;
@property(nonatomic, readonly) NSArray* gestureRecognizers;
- (CGPoint)locationInView:(UIView*)view;
- (CGPoint)previousLocationInView:(UIView*)view;
@end
