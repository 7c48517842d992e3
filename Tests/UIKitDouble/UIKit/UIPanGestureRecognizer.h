#pragma once
#import "UIGestureRecognizer.h"

@interface UIPanGestureRecognizer : UIGestureRecognizer {
    CGPoint _start;
    CGPoint _last;
    NSTimeInterval _lastTime;
    CGPoint _translation;
    CGPoint _velocity;
}
- (CGPoint)translationInView:(UIView*)view;
- (void)setTranslation:(CGPoint)translation inView:(UIView*)view;
- (CGPoint)velocityInView:(UIView*)view; // points a second; none when the finger rested before it was lifted
@end
