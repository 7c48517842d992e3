#pragma once
#import "UIGestureRecognizer.h"

@interface UIPinchGestureRecognizer : UIGestureRecognizer {
    CGFloat _scale;
    CGFloat _startDistance;
}
@property(nonatomic) CGFloat scale;
@end
