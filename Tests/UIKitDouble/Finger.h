#pragma once
// A user's hand. Touches a view, in the view's own coordinates, and moves as hands do; the clock that
// stamps the touches is its own and stands still between them. Where a view is hidden, takes no touches
// or is in a view that does, nothing happens.
#import <UIKit/UIKit.h>

@interface Finger : NSObject
+ (NSTimeInterval)now;
+ (void)wait:(NSTimeInterval)seconds;

+ (void)tap:(UIView*)view; // in its middle
+ (void)tap:(UIView*)view at:(CGPoint)point;
+ (void)press:(UIView*)view for:(NSTimeInterval)seconds;
+ (void)press:(UIView*)view at:(CGPoint)point for:(NSTimeInterval)seconds;
// From the middle, in steps; rests before it is lifted.
+ (void)drag:(UIView*)view by:(CGSize)distance;
+ (void)drag:(UIView*)view from:(CGPoint)start to:(CGPoint)end steps:(NSUInteger)steps;
// Fast, and lifted while it moves.
+ (void)flick:(UIView*)view by:(CGSize)distance;
+ (void)flick:(UIView*)view from:(CGPoint)start by:(CGSize)distance;
// Two fingers.
+ (void)pinch:(UIView*)view from:(CGFloat)start to:(CGFloat)end; // their distances
+ (void)turn:(UIView*)view by:(CGFloat)radians;
// Down on the view, and then a call or something else takes the touch away.
+ (void)beginAndCancel:(UIView*)view;
@end
