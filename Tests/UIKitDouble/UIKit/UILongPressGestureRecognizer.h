#pragma once
#import "UIGestureRecognizer.h"

@interface UILongPressGestureRecognizer : UIGestureRecognizer {
    NSTimeInterval _minimumPressDuration;
    NSTimeInterval _startTime;
    CGPoint _start;
}
@property(nonatomic) NSTimeInterval minimumPressDuration;
@end
