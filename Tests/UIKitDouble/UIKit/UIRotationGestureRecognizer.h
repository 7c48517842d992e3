#pragma once
#import "UIGestureRecognizer.h"

@interface UIRotationGestureRecognizer : UIGestureRecognizer {
    CGFloat _rotation;
    CGFloat _startAngle;
}
@property(nonatomic) CGFloat rotation; // radians
@end
