#pragma once
#import "UIGestureRecognizer.h"

@interface UITapGestureRecognizer : UIGestureRecognizer {
    CGPoint _start;
    NSTimeInterval _startTime;
}
@end
